#include "host/facts/explain/explanation.h"

#include <gmock/gmock.h>

#include "common/timestamp.h"
#include "host/show/time_text.h"
#include "support/database.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// 2024-05-02T00:00:00 UTC.
constexpr std::int64_t kNow = 1'714'608'000;

/// The table PowerEvents: 50,000 rows, 90 days, no size limit.
class ExplainTable : public testing::Test {
 protected:
  void Run(const std::string& sql) const { test::Database(file_).Run(sql); }

  /// Rows of one a minute whose newest is of the moment `kNow`, from the rowid 1 on.
  void Fill(int count) const {
    Run("CREATE TABLE PowerEvents (time TEXT, event_kind TEXT); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + "
        "1 "
        "FROM n WHERE i < " +
        std::to_string(count) +
        ") INSERT INTO PowerEvents SELECT strftime('%Y-%m-%dT%H:%M:%S"
        "+00:00', " +
        std::to_string(kNow) + " - 60 * (" + std::to_string(count) + " - i), 'unixepoch'), '' FROM n");
  }

  [[nodiscard]] Explanation Look(const std::vector<std::int64_t>& rowids = {}) const {
    return Explain(folder_.Path(), "PowerEvents", rowids, kNow);
  }

  test::TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "DeviceUsage.db";
};

TEST_F(ExplainTable, TellsWhatTheRowLimitLeavesAtTodaysRate) {
  Fill(50'400);
  const Explanation explanation = Look();
  EXPECT_EQ(explanation.table.rows, 50'400);
  EXPECT_EQ(explanation.reach.first, Rule::kRowLimit);
  EXPECT_NEAR(explanation.reach.row_limit_days.value(), 45'000 / 1440.0, 0.1);
  EXPECT_EQ(explanation.table.next_pass.row_limit, 5400);
}

TEST_F(ExplainTable, TellsWhenTheTimeOfARowComes) {
  Fill(14'400);
  const RowExplanation row = Look({100}).rows.at(0);
  EXPECT_EQ(row.next_pass, Rule::kNone);
  EXPECT_EQ(row.expires, kNow - 60 * 14'300 + 90 * common::kSecondsPerDay);
  EXPECT_EQ(row.rows_until_limit, 45'000 - 14'300);
  EXPECT_NEAR(row.days_until_limit.value(), (45'000 - 14'300) / 1440.0, 0.1);
}

TEST_F(ExplainTable, ExplainsRowsInTheOrderInWhichTheyAreNamed) {
  Fill(50'400);
  const Explanation explanation = Look({5401, 5400});
  ASSERT_EQ(explanation.rows.size(), 2U);
  EXPECT_EQ(explanation.rows[0].next_pass, Rule::kNone);
  EXPECT_EQ(explanation.rows[0].rows_until_limit, 1);
  EXPECT_EQ(explanation.rows[1].next_pass, Rule::kRowLimit);
  EXPECT_EQ(explanation.rows[1].rows_until_limit, 0);
}

TEST_F(ExplainTable, CountsExpiredRowsAmongNeitherTheOlderNorTheNewer) {
  Run("CREATE TABLE PowerEvents (time TEXT); INSERT INTO PowerEvents VALUES ('2001-01-01'), ('2024-05-01'), "
      "('2024-05-01'), ('2001-01-01')");
  const Explanation explanation = Look({1, 2, 4});
  EXPECT_EQ(explanation.rows[0].next_pass, Rule::kAge);
  EXPECT_EQ(explanation.rows[1].next_pass, Rule::kNone);
  EXPECT_EQ(explanation.rows[1].row.place.older, 0);
  EXPECT_EQ(explanation.rows[1].row.place.newer, 1);
  EXPECT_EQ(explanation.rows[2].next_pass, Rule::kAge);
}

TEST_F(ExplainTable, ShowsTheTimeOfARowAsItStands) {
  Run("CREATE TABLE PowerEvents (time); INSERT INTO PowerEvents VALUES (NULL), ('never'), ('now'), (x'00ff'), "
      "('2024-05-01T12:00:00+02:00')");
  const Explanation explanation = Look({1, 2, 3, 4, 5});
  std::vector<std::string> times;
  for (const RowExplanation& row : explanation.rows) {
    times.push_back(row.row.time);
    EXPECT_EQ(row.next_pass, Rule::kNone);
    EXPECT_EQ(row.expires.has_value(), row.row.rowid == 5) << row.row.rowid;
  }
  EXPECT_THAT(times, testing::ElementsAre("NULL", "never", "now", "x'00FF'", "2024-05-01T12:00:00+02:00"));
  EXPECT_EQ(TimeText(explanation.rows[4].row.moment.value()), "2024-05-01T10:00:00+00:00");
}

TEST_F(ExplainTable, TellsWhetherCompactionMayRenumberTheRows) {
  for (const auto& [columns, may] :
       std::vector<std::pair<const char*, bool>>{{"time TEXT", true},
                                                 {"id INTEGER PRIMARY KEY, time TEXT", false},
                                                 {"id INTEGER, time TEXT, PRIMARY KEY (id)", false},
                                                 {"id INTEGER PRIMARY KEY DESC, time TEXT", true},
                                                 {"id INT PRIMARY KEY, time TEXT", true},
                                                 {"id INTEGER, time TEXT, PRIMARY KEY (id, time)", true}}) {
    Run(std::string("DROP TABLE IF EXISTS PowerEvents; CREATE TABLE PowerEvents (") + columns + ")");
    EXPECT_EQ(Look().rowids_may_change, may) << columns;
  }
}

TEST_F(ExplainTable, TakesAMissingFileOrTableForNoFailure) {
  EXPECT_TRUE(Look().missing_file);
  Run("CREATE TABLE Other (time TEXT)");
  EXPECT_FALSE(Look().missing_file);
  EXPECT_TRUE(Look().table.missing);
  EXPECT_THAT([this] { static_cast<void>(Look({1})); },
              ThrowsMessage<CannotExplain>(HasSubstr("there is no table PowerEvents in ")));
}

TEST_F(ExplainTable, NamesTheRowidsThatThereAreWhenThereIsNoSuchRow) {
  Run("CREATE TABLE PowerEvents (time TEXT)");
  EXPECT_EQ(Look({1}).missing_rows.at(0).text, "PowerEvents has no row with the rowid 1; it is empty");
  Run("INSERT INTO PowerEvents (rowid, time) VALUES (-5, ''), (17, '')");
  const Explanation explanation = Look({18, 17});
  EXPECT_EQ(explanation.missing_rows.at(0).text,
            "PowerEvents has no row with the rowid 18; its rowids lie between -5 and 17");
  EXPECT_EQ(explanation.rows.at(0).row.rowid, 17);
}

TEST_F(ExplainTable, FailsOnATableThatTheRulesWouldMisread) {
  Run("CREATE TABLE PowerEvents (stamp TEXT)");
  EXPECT_THAT([this] { static_cast<void>(Look()); },
              ThrowsMessage<CannotExplain>(HasSubstr("PowerEvents has no column time")));
}

TEST_F(ExplainTable, TellsThatAnotherTableKeepsRunsFromTheDatabase) {
  test::Database(folder_.Path() / "HealthLog.db")
      .Run(
          "CREATE TABLE BatteryStatus (stamp TEXT); CREATE TABLE SleepMetrics (time TEXT); INSERT INTO SleepMetrics "
          "VALUES ('2001-01-01')");
  const Explanation explanation = Explain(folder_.Path(), "SleepMetrics", {1}, kNow);
  EXPECT_EQ(explanation.left_alone, "BatteryStatus has no column time");
  EXPECT_EQ(explanation.rows.at(0).next_pass, Rule::kNone);
}

TEST_F(ExplainTable, ChangesNothing) {
  Fill(10);
  const auto time = std::filesystem::last_write_time(file_);
  static_cast<void>(Look({1}));
  EXPECT_EQ(std::filesystem::last_write_time(file_), time);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

}  // namespace
}  // namespace corvo::telemetry::host
