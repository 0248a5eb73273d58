#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <ostream>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "storage/storage_settings.h"
#include "support/case_name.h"
#include "support/fake_clock.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using telemetry::common::ErrorText;

constexpr const char* kTag = "DataCleanup::DeleteExpiredRows";
constexpr const char* kOneDay = "DELETE FROM Samples WHERE datetime(time) < datetime('2024-05-01T00:00:00+00:00');";
constexpr const char* kNoCutoff = "DELETE FROM Samples WHERE datetime(time) < datetime('');";

class DeleteExpiredRows : public EngineTest {
 protected:
  /// The values that are left of a table with one row of each time.
  std::vector<Row> LeftOf(const std::vector<std::string>& times, std::uint32_t retention_days) {
    Database database = Open("Log");
    CreateTable(database, "Samples");
    for (const std::string& time : times) {
      database.Run("INSERT INTO Samples VALUES (" + time + ", 0)");
    }
    EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, retention_days), Succeeded());
    return database.Query("SELECT rowid FROM Samples ORDER BY rowid");
  }

  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
};

TEST_F(DeleteExpiredRows, SendsOneStatementWithTheCutoffInUtc) {
  CreateDatabase("Log", "Samples", 1);
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre(kOneDay));
  EXPECT_EQ(statements.All().at(0).file, "Log.db");
}

TEST_F(DeleteExpiredRows, PutsTheTableNameIntoTheStatementAsItStands) {
  const StatementLog statements;
  auto* named = contracts.Make("Samples", {.database = "Log", .table = "my table; --"});
  CreateDatabase("Log", "Samples", 1);
  EXPECT_TRUE(DataCleanup::DeleteExpiredRows(named, 1).Failed());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("DELETE FROM my table; -- WHERE datetime(time) < "
                                                     "datetime('2024-05-01T00:00:00+00:00');"));
}

TEST_F(DeleteExpiredRows, DeletesTheRowsBeforeTheCutoffOnly) {
  EXPECT_THAT(LeftOf({"'2024-04-30T23:59:59+00:00'", "'2024-05-01T00:00:00+00:00'", "'2024-05-01T00:00:01+00:00'"}, 1),
              testing::ElementsAre(Row{"2"}, Row{"3"}));
}

TEST_F(DeleteExpiredRows, ComparesMomentsNotTexts) {
  // In order: an hour after, an hour before, at, just before and after the cutoff.
  EXPECT_THAT(LeftOf({"'2024-04-30T23:00:00-02:00'", "'2024-05-01T01:00:00+02:00'", "'2024-05-01T00:00:00Z'",
                      "'2024-04-30T23:59:59Z'", "'2024-05-01 00:00:00'"},
                     1),
              testing::ElementsAre(Row{"1"}, Row{"3"}, Row{"5"}));
}

struct TimeCase {
  const char* name;
  const char* time;  ///< as an SQL literal

  friend void PrintTo(const TimeCase& value, std::ostream* stream) { *stream << value.name; }
};

class TimeTest : public EngineTest, public testing::WithParamInterface<TimeCase> {
 protected:
  /// How many rows are left of one whose time has the literal's own type, with a retention of a day.
  std::int64_t RowsLeft() {
    Database database = Open("Log");
    database.Run("CREATE TABLE Samples (time)");
    database.Run(std::string("INSERT INTO Samples VALUES (") + GetParam().time + ")");
    EXPECT_THAT(DataCleanup::DeleteExpiredRows(contracts.Make("Samples", {.database = "Log"}), 1), Succeeded());
    return database.Count("Samples");
  }
};

class TimeThatIsNoDate : public TimeTest {};

TEST_P(TimeThatIsNoDate, KeepsItsRow) { EXPECT_EQ(RowsLeft(), 1); }

INSTANTIATE_TEST_SUITE_P(
    Times, TimeThatIsNoDate,
    testing::Values(TimeCase{"Null", "NULL"}, TimeCase{"Empty", "''"}, TimeCase{"Word", "'yesterday'"},
                    TimeCase{"Month13", "'2024-13-01T00:00:00+00:00'"}, TimeCase{"Blob", "x'00'"},
                    TimeCase{"SecondsSince1970", "1700000000"}, TimeCase{"TextOfSecondsSince1970", "'1700000000'"},
                    TimeCase{"MillisecondsSince1970", "1700000000000"}, TimeCase{"BeyondTheLastJulianDay", "5373485"}),
    CaseName());

class TimeThatSqliteTakesForADate : public TimeTest {};

TEST_P(TimeThatSqliteTakesForADate, ExpiresItsRow) { EXPECT_EQ(RowsLeft(), 0); }

INSTANTIATE_TEST_SUITE_P(Times, TimeThatSqliteTakesForADate,
                         testing::Values(TimeCase{"TimeAlone", "'12:30:00'"}, TimeCase{"Zero", "0"},
                                         TimeCase{"Year", "2024"}, TimeCase{"TextOfAYear", "'2024'"},
                                         TimeCase{"SpreadsheetDay", "45000.5"}),
                         CaseName());

TEST_F(DeleteExpiredRows, RetentionZeroOpensNothingAndKeepsAll) {
  const StatementLog statements;
  EXPECT_THAT(LeftOf({"'1971-01-01T00:00:00+00:00'"}, 0), testing::SizeIs(1));
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(DeleteExpiredRows, NullContractIsASuccessWithoutAStatement) {
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(nullptr, 1), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

struct ClockCase {
  const char* name;
  std::int64_t now;
  std::uint32_t retention_days;

  friend void PrintTo(const ClockCase& value, std::ostream* stream) { *stream << value.name; }
};

class CutoffBefore1970 : public DeleteExpiredRows, public testing::WithParamInterface<ClockCase> {};

TEST_P(CutoffBefore1970, StillSendsTheStatementWhichDeletesNothing) {
  const FakeClock clock(GetParam().now);
  const StatementLog statements;
  EXPECT_THAT(LeftOf({"'0001-01-01T00:00:00+00:00'", "'1969-01-01T00:00:00+00:00'"}, GetParam().retention_days),
              testing::SizeIs(2));
  EXPECT_THAT(statements.Sql(), testing::ElementsAre(kNoCutoff));
}

INSTANTIATE_TEST_SUITE_P(Clocks, CutoffBefore1970,
                         testing::Values(ClockCase{"Retention30000", FakeClock::kStart, 30'000},
                                         ClockCase{"Retention49710", FakeClock::kStart, 49'710},
                                         ClockCase{"CutoffMinusOne", 86'399, 1}, ClockCase{"CutoffMinusTwo", 86'398, 1},
                                         ClockCase{"ClockBefore1970", -5, 1}),
                         CaseName());

TEST_F(DeleteExpiredRows, CutoffAt1970DeletesWhatIsOlder) {
  const FakeClock clock(86'400);
  EXPECT_THAT(LeftOf({"'1969-12-31T23:59:59+00:00'", "'1970-01-01T00:00:00+00:00'"}, 1),
              testing::ElementsAre(Row{"2"}));
}

TEST_F(DeleteExpiredRows, Retention49711WrapsToLessThanADay) {
  const StatementLog statements;
  // 63,104 seconds before midnight.
  EXPECT_THAT(LeftOf({"'2024-05-01T06:28:15+00:00'", "'2024-05-01T06:28:16+00:00'"}, 49'711),
              testing::ElementsAre(Row{"2"}));
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("DELETE FROM Samples WHERE datetime(time) < "
                                                     "datetime('2024-05-01T06:28:16+00:00');"));
}

TEST_F(DeleteExpiredRows, MissingTableIsASuccessButIsLogged) {
  CreateDatabase("Log", "Other", 1);
  const LogCapture log;
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), Succeeded());
  EXPECT_THAT(log.Lines(), testing::ElementsAre(LogLine{
                               plog::error, kTag,
                               "DataCleanup::DeleteExpiredRows - exception : {\"category\":\"EC_Custom\",\"code\":1,"
                               "\"type\":\"sqlite3\",\"version\":3,\"what\":\"no such table: Samples\"}"}));
}

TEST_F(DeleteExpiredRows, OtherFailureIsReturnedAndLoggedOnce) {
  Open("Log").Run("CREATE TABLE Samples (moment TEXT)");
  const LogCapture log;
  const auto result = DataCleanup::DeleteExpiredRows(contract, 1);
  EXPECT_THAT(result, FailedWith("no such column: time"));
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_THAT(log.Lines(), testing::ElementsAre(
                               LogLine{plog::error, kTag, std::string(kTag) + " - exception : " + ErrorText(result)}));
}

TEST_F(DeleteExpiredRows, MissingDatabaseIsAFailure) {
  EXPECT_TRUE(DataCleanup::DeleteExpiredRows(contract, 1).Failed());
  EXPECT_FALSE(std::filesystem::exists(directory / "Log.db"));
}

TEST_F(DeleteExpiredRows, LockedDatabaseIsAFailureAndKeepsItsRows) {
  shared::SetBusyTimeout(std::chrono::milliseconds(0));
  CreateDatabase("Log", "Samples", 0);
  Database other = Open("Log");
  AddRows(other, "Samples", 3, kOldTime);
  other.Run("BEGIN IMMEDIATE");
  const auto result = DataCleanup::DeleteExpiredRows(contract, 1);
  shared::SetBusyTimeout(std::chrono::seconds(5));
  other.Run("COMMIT");
  EXPECT_THAT(result, FailedWith("database is locked"));
  EXPECT_EQ(other.Count("Samples"), 3);
}

TEST_F(DeleteExpiredRows, DamagedFileIsAFailure) {
  std::ofstream(directory / "Log.db") << std::string(4096, 'x');
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), FailedWith("file is not a database"));
}

TEST_F(DeleteExpiredRows, ViewIsNeverDeletedThrough) {
  CreateDatabase("Log", "Rows", 0);
  Database database = Open("Log");
  AddRows(database, "Rows", 2, kOldTime);
  database.Run("CREATE VIEW Samples AS SELECT * FROM Rows");
  EXPECT_TRUE(DataCleanup::DeleteExpiredRows(contract, 1).Failed());
  EXPECT_EQ(database.Count("Rows"), 2);
}

TEST_F(DeleteExpiredRows, WorksOnATableWithoutRowid) {
  Database database = Open("Log");
  database.Run("CREATE TABLE Samples (time TEXT, value INTEGER PRIMARY KEY) WITHOUT ROWID");
  AddRows(database, "Samples", 3, kOldTime);
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), Succeeded());
  EXPECT_EQ(database.Count("Samples"), 0);
}

TEST_F(DeleteExpiredRows, NeedsNoLogger) {
  Open("Log").Run("CREATE TABLE Samples (moment TEXT)");
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), FailedWith("no such column"));
}

TEST_F(DeleteExpiredRows, LogsNothingBelowErrorSeverity) {
  Open("Log").Run("CREATE TABLE Samples (moment TEXT)");
  const LogCapture log(plog::fatal);
  EXPECT_TRUE(DataCleanup::DeleteExpiredRows(contract, 1).Failed());
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

}  // namespace
}  // namespace corvo::test
