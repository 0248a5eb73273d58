#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using telemetry::common::ErrorText;

constexpr const char* kTag = "DataCleanup::GetRowCount";

class GetRowCount : public EngineTest {
 protected:
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
  std::uint32_t count = 0;
};

TEST_F(GetRowCount, CountsTheRowsWithOneQuery) {
  CreateDatabase("Log", "Samples", 42);
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), Succeeded());
  EXPECT_EQ(count, 42U);
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT COUNT(*) AS rows FROM Samples"));
}

TEST_F(GetRowCount, CountsTheTableThatTheOptionsName) {
  CreateDatabase("Log", "Named", 3);
  auto* named = contracts.Make("Samples", {.database = "Log", .table = "Named"});
  EXPECT_THAT(DataCleanup::GetRowCount(named, count), Succeeded());
  EXPECT_EQ(count, 3U);
}

TEST_F(GetRowCount, OfAnEmptyTableIsZero) {
  CreateDatabase("Log", "Samples", 0);
  count = 7;
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), Succeeded());
  EXPECT_EQ(count, 0U);
}

TEST_F(GetRowCount, MissingTableIsASuccessThatLeavesTheCountAndIsLogged) {
  CreateDatabase("Log", "Other", 5);
  const LogCapture log;
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), Succeeded());
  EXPECT_EQ(count, 0U);
  EXPECT_THAT(log.Lines(), testing::ElementsAre(
                               LogLine{plog::error, kTag,
                                       "DataCleanup::GetRowCount - exception : {\"category\":\"EC_Custom\",\"code\":1,"
                                       "\"type\":\"sqlite3\",\"version\":3,\"what\":\"no such table: Samples\"}"}));
}

TEST_F(GetRowCount, OtherFailureIsReturnedAndLoggedAndLeavesTheCount) {
  count = 9;
  const LogCapture log;
  const auto result = DataCleanup::GetRowCount(contract, count);
  EXPECT_THAT(result, FailedWith("Log.db"));
  EXPECT_EQ(count, 9U);
  EXPECT_THAT(log.Lines(), testing::ElementsAre(
                               LogLine{plog::error, kTag, std::string(kTag) + " - exception : " + ErrorText(result)}));
}

TEST_F(GetRowCount, NullContractIsAFailureThatIsNotLogged) {
  count = 9;
  const LogCapture log;
  EXPECT_THAT(DataCleanup::GetRowCount(nullptr, count), OwnError("DataCleanup::GetRowCount(480) message is NULL"));
  EXPECT_EQ(count, 9U);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(GetRowCount, CountsATableWithoutRowid) {
  Database database = Open("Log");
  database.Run("CREATE TABLE Samples (time TEXT, value INTEGER PRIMARY KEY) WITHOUT ROWID");
  AddRows(database, "Samples", 4);
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), Succeeded());
  EXPECT_EQ(count, 4U);
}

}  // namespace
}  // namespace corvo::test
