#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "support/buffer_allocator.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using telemetry::contracts::ContractCatalogue;
using telemetry::contracts::DatabaseCatalogue;
using telemetry::contracts::GetPersistance;
using telemetry::contracts::GetTableName;
using telemetry::plugin::DataCleanupPlugin;
using testing::AllOf;
using testing::Contains;
using testing::Not;
using testing::StartsWith;

/// Passes over all databases of the catalogue, with empty tables.
class TwoPasses : public PassTest {
 protected:
  TwoPasses() {
    for (const Message* contract : ContractCatalogue()) {
      Open(GetPersistance(*contract).database()).Run("CREATE TABLE " + GetTableName(contract) + " (time TEXT)");
    }
  }

  static std::map<std::string, std::vector<const Message*>> ContractsByDatabase() {
    std::map<std::string, std::vector<const Message*>> result;
    for (const Message* contract : ContractCatalogue()) {
      result[GetPersistance(*contract).database()].push_back(contract);
    }
    return result;
  }

  void RunPass() {
    char* output = nullptr;
    module.Execute(nullptr, output, allocator);
    ASSERT_STREQ(output, kSuccessJson);
  }

  [[nodiscard]] std::vector<std::string> StatementsOfPass(const std::string& file) {
    const StatementLog log;
    RunPass();
    std::vector<std::string> statements;
    for (const Statement& statement : log.All()) {
      if (statement.file == file) {
        statements.push_back(statement.sql);
      }
    }
    return statements;
  }

  DataCleanupPlugin module;
  BufferAllocator allocator;
};

std::uint32_t SizeLimitOf(const std::string& database) {
  for (const Message* message : DatabaseCatalogue()) {
    if (GetPersistance(*message).database() == database) {
      return GetPersistance(*message).database_options().max_size_mb();
    }
  }
  return 0;
}

TEST_F(TwoPasses, FirstLeavesTheLastContractsOptionsWithTheFirstContractOfEachLimitedDatabase) {
  int limited = 0;
  for (const auto& [database, contracts] : ContractsByDatabase()) {
    const std::string first = GetPersistance(*contracts.front()).SerializeAsString();
    const std::string last = GetPersistance(*contracts.back()).SerializeAsString();
    RunPass();
    limited += SizeLimitOf(database) != 0 ? 1 : 0;
    EXPECT_EQ(GetPersistance(*contracts.front()).SerializeAsString(), SizeLimitOf(database) != 0 ? last : first);
  }
  EXPECT_GT(limited, 1);
}

TEST_F(TwoPasses, FirstLeavesTheOtherContractsOptionsAlone) {
  std::map<const Message*, std::string> before;
  for (const auto& [database, contracts] : ContractsByDatabase()) {
    for (std::size_t index = 1; index < contracts.size(); ++index) {
      before[contracts[index]] = GetPersistance(*contracts[index]).SerializeAsString();
    }
  }
  RunPass();
  for (const auto& [contract, options] : before) {
    EXPECT_EQ(GetPersistance(*contract).SerializeAsString(), options) << contract->GetDescriptor()->name();
  }
}

// The first contract of this database has a row limit and the last has none, so the second pass no longer counts.
TEST_F(TwoPasses, SecondActsOnTheOptionsThatTheFirstLeftBehind) {
  const std::string count = "SELECT COUNT(*) AS rows FROM BatteryHealthLog";
  EXPECT_THAT(StatementsOfPass("HealthLog.db"), Contains(count));
  EXPECT_THAT(StatementsOfPass("HealthLog.db"),
              AllOf(Not(Contains(count)), Contains(StartsWith("DELETE FROM BatteryHealthLog WHERE datetime(time)"))));
}

TEST_F(TwoPasses, SecondTrimsNoRowsOfATableThatLostItsLimit) {
  const std::string overfull =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 10000) INSERT INTO BatteryHealthLog "
      "SELECT '2100-01-01T00:00:00+00:00' FROM n";
  Open("HealthLog").Run(overfull);
  RunPass();
  EXPECT_EQ(Open("HealthLog").Count("BatteryHealthLog"), 9'000);
  Open("HealthLog").Run(overfull);
  RunPass();
  EXPECT_EQ(Open("HealthLog").Count("BatteryHealthLog"), 19'000);
}

TEST_F(TwoPasses, LeaveADatabaseWithoutSizeLimitAsItWas) {
  const auto first = StatementsOfPass("DeviceUsage.db");
  EXPECT_EQ(SizeLimitOf("DeviceUsage"), 0U);
  EXPECT_EQ(StatementsOfPass("DeviceUsage.db"), first);
}

}  // namespace
}  // namespace corvo::test
