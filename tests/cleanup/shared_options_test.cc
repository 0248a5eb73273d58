#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "cleanup/trimming.h"
#include "contracts/catalogue.h"
#include "contracts/lookups.h"
#include "support/kept_options.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::ReadLimitThroughFirst;
using telemetry::contracts::GetPersistance;
using telemetry::contracts::GetTableName;
using Options = telemetry::contract::storage::PersistanceMessageOptions;

class SharedOptions : public EngineTest {
 protected:
  google::protobuf::Message* first = contracts.Make(
      "First", {.database = "Log", .table = "One", .max_rows = 11, .retention_days = 21, .max_size_mb = 1});
  google::protobuf::Message* last = contracts.Make(
      "Last", {.database = "log", .table = "Two", .max_rows = 12, .retention_days = 22, .max_size_mb = 2});
  google::protobuf::Message* bare = contracts.MakeWithoutOptions("Bare");
};

TEST_F(SharedOptions, LimitReadThroughTheFirstContractIsTheContractsOwn) {
  EXPECT_EQ(ReadLimitThroughFirst(first, first), 1U);
  EXPECT_EQ(ReadLimitThroughFirst(last, first), 2U);
}

TEST_F(SharedOptions, FirstContractCarriesAllOptionsOfTheLastOneFromThenOn) {
  EXPECT_EQ(ReadLimitThroughFirst(last, first), 2U);
  const Options& options = GetPersistance(*first);
  EXPECT_EQ(options.database(), "log");
  EXPECT_EQ(options.database_options().max_size_mb(), 2U);
  EXPECT_EQ(options.table_options().table_name(), "Two");
  EXPECT_EQ(options.table_options().max_rows(), 12U);
  EXPECT_EQ(options.table_options().retention_days(), 22U);
  EXPECT_EQ(GetTableName(first), "Two");
}

TEST_F(SharedOptions, LastContractKeepsItsOptions) {
  const std::string before = GetPersistance(*last).SerializeAsString();
  EXPECT_EQ(ReadLimitThroughFirst(last, first), 2U);
  EXPECT_EQ(GetPersistance(*last).SerializeAsString(), before);
}

TEST_F(SharedOptions, AssigningTheFirstContractToItselfChangesNothing) {
  const std::string before = GetPersistance(*first).SerializeAsString();
  EXPECT_EQ(ReadLimitThroughFirst(first, first), 1U);
  EXPECT_EQ(GetPersistance(*first).SerializeAsString(), before);
}

TEST_F(SharedOptions, ContractWithoutOptionsEmptiesThoseOfTheFirst) {
  EXPECT_EQ(ReadLimitThroughFirst(bare, first), 0U);
  EXPECT_EQ(GetPersistance(*first).SerializeAsString(), "");
}

TEST_F(SharedOptions, FirstTypeWithoutOptionsNeverChangesTheDefaultOfAllTypes) {
  EXPECT_EQ(ReadLimitThroughFirst(last, bare), 2U);
  EXPECT_EQ(&GetPersistance(*bare), &Options::default_instance());
  EXPECT_EQ(Options::default_instance().SerializeAsString(), "");
}

TEST_F(SharedOptions, NullContractHasNoLimitAndWritesNothing) {
  const std::string before = GetPersistance(*first).SerializeAsString();
  EXPECT_EQ(ReadLimitThroughFirst(nullptr, first), 0U);
  EXPECT_EQ(ReadLimitThroughFirst(last, nullptr), 0U);
  EXPECT_EQ(GetPersistance(*first).SerializeAsString(), before);
}

TEST_F(SharedOptions, AreWrittenEvenWhenTheDatabaseIsWithinItsLimit) {
  CreateDatabase("Log", "One", 1);
  const DatabaseEntry entry{100, {first, last}};
  EXPECT_THAT(DataCleanup().EnforceSizeLimit(&entry), Succeeded());
  EXPECT_EQ(GetTableName(first), "Two");
  EXPECT_EQ(GetTableName(last), "Two");
}

TEST_F(SharedOptions, AreNotWrittenForADatabaseWithoutALimit) {
  CreateDatabase("Log", "One", 1);
  const DatabaseEntry entry{0, {first, last}};
  EXPECT_THAT(DataCleanup().EnforceSizeLimit(&entry), Succeeded());
  EXPECT_EQ(GetTableName(first), "One");
}

TEST_F(SharedOptions, OfAGeneratedTypeAreTheOnesEveryLaterLookupSees) {
  const auto& catalogue = telemetry::contracts::ContractCatalogue();
  const KeptOptions kept(catalogue);
  const auto* battery = catalogue.at(1);
  const auto* metrics = catalogue.at(2);
  ASSERT_EQ(GetTableName(battery), "BatteryHealthLog");
  EXPECT_EQ(ReadLimitThroughFirst(metrics, battery), 100U);
  EXPECT_EQ(GetTableName(battery), "BatteryReportMetrics");
  EXPECT_EQ(GetPersistance(*battery).table_options().max_rows(), 20'000U);
}

}  // namespace
}  // namespace corvo::test
