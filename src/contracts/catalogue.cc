#include "contracts/catalogue.h"

#include "corvo/telemetry/contract/storage/collector_cache.pb.h"
#include "corvo/telemetry/contract/storage/databases.pb.h"
#include "corvo/telemetry/contract/storage/device_health.pb.h"
#include "corvo/telemetry/contract/storage/device_performance.pb.h"
#include "corvo/telemetry/contract/storage/device_profile.pb.h"
#include "corvo/telemetry/contract/storage/device_usage.pb.h"
#include "data_contracts/shared_instance.h"

namespace corvo::telemetry::contracts {
namespace {

using google::protobuf::Message;
namespace storage = contract::storage;
namespace health = contract::storage::device_health;
namespace performance = contract::storage::device_performance;
namespace profile = contract::storage::device_profile;
namespace usage = contract::storage::device_usage;

template <class... Types>
std::vector<Message*> InstancesOf() {
  return {storage::SharedInstance(Types::default_instance())...};
}

const std::vector<Message*> kContractCatalogue =
    InstancesOf<storage::CollectorCache,                                                               //
                health::BatteryHealthLog, health::BatteryReportMetricsLog, health::BatteryStatus,      //
                health::BootHealthLog, health::SleepMetricsLog, health::StorageNVMEHealthLog,          //
                performance::AmdPmfSamples, performance::EnergyEMISamples,                             //
                performance::ThermalCorvoBiosSamples,                                                  //
                profile::Device, profile::DeviceEvents, profile::HardwareEvents,                       //
                profile::FirmwareEvents, profile::OperatingSystemEvents, profile::PeripheralEvents,    //
                profile::FwBios, profile::FwSMBios, profile::FwEmbeddedController, profile::FwAmdPsp,  //
                profile::FwCameraController, profile::FwStorageDrive,                                  //
                profile::HwBaseBoard, profile::HwBattery, profile::HwGraphicsCard,                     //
                profile::HwNetworkAdapter, profile::HwMemoryChip, profile::HwMemory,                   //
                profile::HwProcessor, profile::HwStorageDrive, profile::HwTrustedPlatformModule,       //
                profile::OperatingSystem, profile::Peripherals,                                        //
                usage::PowerEvents>();

const std::vector<Message*> kDatabaseCatalogue =
    InstancesOf<storage::Cache, storage::DeviceProfile, storage::DeviceProfileEvents, storage::DeviceUsage,
                storage::HealthLog, storage::PerformanceSamples>();

}  // namespace

const std::vector<Message*>& ContractCatalogue() { return kContractCatalogue; }

const std::vector<Message*>& DatabaseCatalogue() { return kDatabaseCatalogue; }

}  // namespace corvo::telemetry::contracts
