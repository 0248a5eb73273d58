#include "host/facts/directory_state.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "support/database.h"
#include "support/option_scope.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;

constexpr std::int64_t kNow = 1'714'608'000;  // 2024-05-02T00:00:00 UTC

/// A database of the catalogue with a table that keeps 10,000 rows for 180 days.
class ReadState : public testing::Test {
 protected:
  ReadState() { file_.Run("CREATE TABLE BootHealthLog (time TEXT, n INTEGER)"); }

  void Add(const std::string& time) { file_.Run("INSERT INTO BootHealthLog VALUES (" + time + ", 0)"); }

  [[nodiscard]] DatabaseState Database() const {
    return ReadDirectoryState(folder_.Path(), "", {"HealthLog"}, kNow).databases.at(0);
  }

  [[nodiscard]] static TableState Of(const DatabaseState& database, const std::string& name) {
    return *std::find_if(database.tables.begin(), database.tables.end(),
                         [&](const TableState& table) { return table.contract.table == name; });
  }

  [[nodiscard]] TableState Table() const { return Of(Database(), "BootHealthLog"); }

  static void ExpectOdd(const OddRows& odd, std::int64_t rows, std::int64_t rowid, const std::string& sample) {
    EXPECT_EQ(odd.rows, rows);
    EXPECT_EQ(odd.rowid, rowid);
    EXPECT_EQ(odd.sample, sample);
  }

  test::TempDir folder_;
  test::Database file_{folder_.Path() / "HealthLog.db"};
};

TEST_F(ReadState, FindsOldestNewestAndTheRate) {
  Add("'2024-04-01T00:00:00Z'");
  for (int row = 0; row < 70; ++row) {
    Add("'2024-05-01T12:00:00+02:00'");
  }
  const TableState table = Table();
  EXPECT_EQ(table.rows, 71);
  EXPECT_EQ(table.oldest, 1'711'929'600);
  EXPECT_EQ(table.newest, 1'714'557'600);
  EXPECT_DOUBLE_EQ(table.rows_per_day, 10);
  EXPECT_FALSE(NeedsAttention(table, kNow));
}

TEST_F(ReadState, TakesTheRateOfAYoungTableFromItsOwnSpan) {
  for (int row = 0; row < 60; ++row) {
    Add("'2024-04-30T00:00:00Z'");
  }
  EXPECT_DOUBLE_EQ(Table().rows_per_day, 30);
}

TEST_F(ReadState, CountsOddRowsWithTheFirstOfEach) {
  for (const char* time : {"'2024-05-01'", "NULL", "NULL", "'yesterday'", "'now'", "''", "X'00ff'",
                           "'2024-05-03T00:00:01'", "2024", "'12:30'", "'2400000.5'"}) {
    Add(time);
  }
  const TableState table = Table();
  ExpectOdd(table.no_time, 2, 2, "NULL");
  ExpectOdd(table.unreadable, 4, 4, "yesterday");
  ExpectOdd(table.future, 1, 8, "2024-05-03T00:00:01");
  ExpectOdd(table.ancient, 3, 9, "2024");
  EXPECT_EQ(table.next_pass.expired, 3);
  EXPECT_TRUE(NeedsAttention(table, kNow));
}

TEST_F(ReadState, TakesOldDatesForNothingOdd) {
  Add("'1999-01-01'");
  const TableState table = Table();
  EXPECT_EQ(table.ancient.rows, 0);
  EXPECT_EQ(table.next_pass.expired, 1);
  EXPECT_TRUE(IsOverAge(table, kNow));
}

TEST_F(ReadState, AllowsADayMoreThanTheRetention) {
  Add("datetime(1714608000 - 181 * 86400, 'unixepoch')");
  EXPECT_FALSE(IsOverAge(Table(), kNow));
  Add("datetime(1714608000 - 181 * 86400 - 1, 'unixepoch')");
  EXPECT_TRUE(IsOverAge(Table(), kNow));
}

TEST_F(ReadState, TellsOfATableThatTheRulesWouldMisreadAndOfNothingElseInIt) {
  file_.Run("CREATE TABLE SleepMetrics (n INTEGER); INSERT INTO SleepMetrics VALUES (1)");
  Add("'1999-01-01'");
  const DatabaseState database = Database();
  EXPECT_EQ(Of(database, "SleepMetrics").problem, "SleepMetrics has no column time");
  EXPECT_FALSE(Of(database, "SleepMetrics").unread);
  EXPECT_EQ(Of(database, "BootHealthLog").rows, 1);
  EXPECT_EQ(Of(database, "BootHealthLog").next_pass.Sum(), 0);  // a run leaves the database alone
  EXPECT_TRUE(Of(database, "BatteryStatus").missing);
}

TEST_F(ReadState, CountsTheBytesOfAWriteAheadLogAndItsRows) {
  file_.Run("PRAGMA journal_mode=WAL");
  Add("'2024-05-01'");
  const DatabaseState database = Database();
  EXPECT_GT(database.wal_bytes, 0);
  EXPECT_EQ(Of(database, "BootHealthLog").rows, 1);
}

TEST_F(ReadState, CountsFreePages) {
  file_.Run("CREATE TABLE Gone (x); INSERT INTO Gone VALUES (zeroblob(1000000)); DROP TABLE Gone");
  const DatabaseState database = Database();
  EXPECT_GT(database.free_bytes, 900'000);
  EXPECT_EQ(database.free_bytes + database.live_bytes, database.file_bytes);
  EXPECT_EQ(database.engine_mb, 1U);
}

TEST_F(ReadState, TellsWhyADatabaseCannotBeRead) {
  file_.Run("BEGIN EXCLUSIVE");
  const test::OptionScope no_waiting(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(0));
  const DatabaseState database = Database();
  ASSERT_TRUE(database.problem.has_value());
  EXPECT_THAT(database.problem->reason, HasSubstr("another program holds it locked"));
  EXPECT_GT(database.file_bytes, 0);
  EXPECT_TRUE(NeedsAttention(database, kNow));
}

TEST_F(ReadState, TellsOfAChangeThatItsWriterNeverEnded) {
  file_.Run("CREATE TABLE Other (x); INSERT INTO Other VALUES (zeroblob(100000))");
  file_.Run("PRAGMA cache_size = 2; BEGIN; UPDATE Other SET x = zeroblob(100001)");
  const test::TempDir left;
  for (const char* name : {"HealthLog.db", "HealthLog.db-journal"}) {
    std::filesystem::copy_file(folder_.Path() / name, left.Path() / name);
  }
  const DatabaseState database = ReadDirectoryState(left.Path(), "", {"HealthLog"}, kNow).databases.at(0);
  ASSERT_TRUE(database.problem.has_value());
  EXPECT_THAT(database.problem->reason, HasSubstr("a writer left it in the middle of a change"));
  EXPECT_EQ(database.problem->cause, Problem::Cause::kHalfChanged);
  EXPECT_TRUE(std::filesystem::exists(left.Path() / "HealthLog.db-journal"));
}

TEST_F(ReadState, KnowsWhichDatabasesAreNotThere) {
  const DirectoryState state = ReadDirectoryState(folder_.Path(), "", {}, kNow);
  EXPECT_EQ(state.databases.size(), 6U);
  EXPECT_EQ(std::count_if(state.databases.begin(), state.databases.end(),
                          [](const DatabaseState& database) { return database.missing; }),
            5);
}

}  // namespace
}  // namespace corvo::telemetry::host
