#include "contracts/catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "data_contracts/shared_instance.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using telemetry::contract::storage::SharedInstance;
using telemetry::contracts::ContractCatalogue;
using telemetry::contracts::DatabaseCatalogue;
using testing::ElementsAreArray;

const std::vector<std::string> kContracts = {
    "CollectorCache",
    "device_health.BatteryHealthLog",
    "device_health.BatteryReportMetricsLog",
    "device_health.BatteryStatus",
    "device_health.BootHealthLog",
    "device_health.SleepMetricsLog",
    "device_health.StorageNVMEHealthLog",
    "device_performance.AmdPmfSamples",
    "device_performance.EnergyEMISamples",
    "device_performance.ThermalCorvoBiosSamples",
    "device_profile.Device",
    "device_profile.DeviceEvents",
    "device_profile.HardwareEvents",
    "device_profile.FirmwareEvents",
    "device_profile.OperatingSystemEvents",
    "device_profile.PeripheralEvents",
    "device_profile.FwBios",
    "device_profile.FwSMBios",
    "device_profile.FwEmbeddedController",
    "device_profile.FwAmdPsp",
    "device_profile.FwCameraController",
    "device_profile.FwStorageDrive",
    "device_profile.HwBaseBoard",
    "device_profile.HwBattery",
    "device_profile.HwGraphicsCard",
    "device_profile.HwNetworkAdapter",
    "device_profile.HwMemoryChip",
    "device_profile.HwMemory",
    "device_profile.HwProcessor",
    "device_profile.HwStorageDrive",
    "device_profile.HwTrustedPlatformModule",
    "device_profile.OperatingSystem",
    "device_profile.Peripherals",
    "device_usage.PowerEvents",
};

const std::vector<std::string> kDatabases = {
    "Cache", "DeviceProfile", "DeviceProfileEvents", "DeviceUsage", "HealthLog", "PerformanceSamples",
};

std::vector<std::string> FullNames(const std::vector<Message*>& messages) {
  std::vector<std::string> names;
  for (const Message* message : messages) {
    names.push_back(message->GetDescriptor()->full_name());
  }
  return names;
}

std::vector<std::string> InStorage(std::vector<std::string> names) {
  for (std::string& name : names) {
    name.insert(0, "corvo.telemetry.contract.storage.");
  }
  return names;
}

TEST(ContractCatalogue, ListsTheContractsInOrder) {
  EXPECT_THAT(FullNames(ContractCatalogue()), ElementsAreArray(InStorage(kContracts)));
}

TEST(DatabaseCatalogue, ListsTheDatabasesInOrder) {
  EXPECT_THAT(FullNames(DatabaseCatalogue()), ElementsAreArray(InStorage(kDatabases)));
}

class Catalogue : public testing::TestWithParam<const std::vector<Message*>& (*)()> {};

TEST_P(Catalogue, IsTheSameListEveryTime) { EXPECT_EQ(&GetParam()(), &GetParam()()); }

TEST_P(Catalogue, HoldsOneInstanceOfEachType) {
  const std::set<const Message*> instances(GetParam()().begin(), GetParam()().end());
  const auto names = FullNames(GetParam()());
  EXPECT_EQ(instances.size(), GetParam()().size());
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
}

TEST_P(Catalogue, HoldsInstancesAsTheirDefaultConstructorMadeThem) {
  for (const Message* message : GetParam()()) {
    EXPECT_EQ(message->ByteSizeLong(), 0U) << message->GetDescriptor()->full_name();
  }
}

TEST_P(Catalogue, HoldsInstancesOfTheirOwnAndNotTheTypesDefaultInstances) {
  for (const Message* message : GetParam()()) {
    const auto* type = message->GetDescriptor();
    EXPECT_NE(message, google::protobuf::MessageFactory::generated_factory()->GetPrototype(type)) << type->full_name();
  }
}

// Every module of the process, and every loading of one, finds the same instances.
TEST_P(Catalogue, SharesItsInstancesWithTheProcess) {
  for (const Message* message : GetParam()()) {
    EXPECT_EQ(SharedInstance(*message), message) << message->GetDescriptor()->full_name();
  }
}

TEST_P(Catalogue, IsReadableFromSeveralThreadsAtOnce) {
  const auto expected = FullNames(GetParam()());
  std::vector<std::vector<std::string>> seen(4);
  std::vector<std::thread> threads;
  for (auto& names : seen) {
    threads.emplace_back([&names, list = GetParam()] { names = FullNames(list()); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const auto& names : seen) {
    EXPECT_EQ(names, expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Contracts, Catalogue, testing::Values(&ContractCatalogue));
INSTANTIATE_TEST_SUITE_P(Databases, Catalogue, testing::Values(&DatabaseCatalogue));

}  // namespace
}  // namespace corvo::test
