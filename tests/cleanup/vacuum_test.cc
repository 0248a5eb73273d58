#include <gtest/gtest.h>

#include <filesystem>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "storage/storage_settings.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

class Vacuum : public EngineTest {
 protected:
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
};

TEST_F(Vacuum, SendsOneStatementThatNamesNoTable) {
  CreateDatabase("Log", "Samples", 1);
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::Vacuum(contract), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("VACUUM;"));
}

TEST_F(Vacuum, GivesTheSpaceOfDeletedRowsBackAndKeepsTheOthers) {
  {
    CreateDatabase("Log", "Samples", 10);
    Database database = Open("Log");
    AddPayload(database, "Samples", 1'000'000);
    database.Run("DELETE FROM Samples WHERE typeof(value) = 'blob'");
  }
  ASSERT_GT(std::filesystem::file_size(directory / "Log.db"), 1'000'000U);
  EXPECT_THAT(DataCleanup::Vacuum(contract), Succeeded());
  EXPECT_LT(std::filesystem::file_size(directory / "Log.db"), 20'000U);
  EXPECT_EQ(Open("Log").Count("Samples"), 10);
}

TEST_F(Vacuum, NeedsNoTable) {
  CreateDatabase("Log", "Other", 1);
  EXPECT_THAT(DataCleanup::Vacuum(contract), Succeeded());
}

TEST_F(Vacuum, NullIsASuccessThatOpensNothing) {
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::Vacuum(nullptr), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(Vacuum, FailureIsTheStoragesRecordWithoutALogRecord) {
  CreateDatabase("Log", "Samples", 1);
  shared::SetBusyTimeout(std::chrono::milliseconds(0));
  Database other = Open("Log");
  other.Run("BEGIN IMMEDIATE");
  const LogCapture log;
  const auto result = DataCleanup::Vacuum(contract);
  shared::SetBusyTimeout(std::chrono::seconds(5));
  other.Run("COMMIT");
  EXPECT_THAT(result, FailedWith("database is locked"));
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(Vacuum, MissingDatabaseIsAFailureAndIsNotCreated) {
  EXPECT_THAT(DataCleanup::Vacuum(contract), FailedWith("Log.db"));
  EXPECT_FALSE(std::filesystem::exists(directory / "Log.db"));
}

}  // namespace
}  // namespace corvo::test
