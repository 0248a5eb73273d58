#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

class TruncateRows : public EngineTest {
 protected:
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
};

TEST_F(TruncateRows, SendsOneStatement) {
  CreateDatabase("Log", "Samples", 1);
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 25), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("DELETE FROM Samples WHERE rowid IN (SELECT rowid FROM Samples "
                                                     "ORDER BY rowid ASC LIMIT 25);"));
}

TEST_F(TruncateRows, WritesTheNumberOfRowsUnsigned) {
  CreateDatabase("Log", "Samples", 2);
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 4'294'967'295), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre(testing::HasSubstr("LIMIT 4294967295);")));
  EXPECT_EQ(Open("Log").Count("Samples"), 0);
}

TEST_F(TruncateRows, DeletesTheOldestInsertedRowsFirst) {
  CreateDatabase("Log", "Samples", 5);
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 2), Succeeded());
  EXPECT_THAT(Open("Log").Query("SELECT value FROM Samples ORDER BY value"),
              testing::ElementsAre(Row{"3"}, Row{"4"}, Row{"5"}));
}

TEST_F(TruncateRows, GoesBySmallestRowidNotByTime) {
  Database database = Open("Log");
  CreateTable(database, "Samples");
  database.Run(
      "INSERT INTO Samples (rowid, time, value) VALUES (30, '2020-01-01', 1), (-7, '2024-01-01', 2), "
      "(10, '2022-01-01', 3)");
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 2), Succeeded());
  EXPECT_THAT(database.Query("SELECT rowid FROM Samples"), testing::ElementsAre(Row{"30"}));
}

TEST_F(TruncateRows, EmptiesATableThatHasFewerRows) {
  CreateDatabase("Log", "Samples", 3);
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 10), Succeeded());
  EXPECT_EQ(Open("Log").Count("Samples"), 0);
}

TEST_F(TruncateRows, OfZeroRowsExecutesNothing) {
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 0), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(TruncateRows, OfANullContractExecutesNothing) {
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::TruncateRows(nullptr, 1), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(TruncateRows, MissingTableIsASuccessWithoutALogRecord) {
  CreateDatabase("Log", "Other", 2);
  const LogCapture log;
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 1), Succeeded());
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
  EXPECT_EQ(Open("Log").Count("Other"), 2);
}

TEST_F(TruncateRows, StorageFailureIsReturnedAsItIsWithoutALogRecord) {
  Open("Log").Run("CREATE TABLE Samples (time TEXT, value PRIMARY KEY) WITHOUT ROWID");
  const LogCapture log;
  const auto result = DataCleanup::TruncateRows(contract, 1);
  EXPECT_THAT(result, FailedWith("no such column: rowid"));
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

}  // namespace
}  // namespace corvo::test
