#include "host/show/explain/explain_text.h"

#include <gmock/gmock.h>

#include <sstream>

#include "common/timestamp.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;
using testing::Not;

/// 2024-05-02T00:00:00 UTC.
constexpr std::int64_t kNow = 1'714'608'000;

class ExplainedTable : public testing::Test {
 protected:
  ExplainedTable() {
    explanation_.contract.type = "corvo.telemetry.contract.storage.device_health.SleepMetricsLog";
    explanation_.contract.table = "SleepMetrics";
    explanation_.contract.database = explanation_.database.database = "HealthLog";
    explanation_.contract.max_rows = 20'000;
    explanation_.contract.retention_days = 90;
    explanation_.contract.max_size_mb = explanation_.database.max_size_mb = 100;
    explanation_.path = "/data/HealthLog.db";
    explanation_.now = kNow;
    explanation_.table.rows = 21'000;
    explanation_.table.oldest = kNow - 10 * common::kSecondsPerDay;
    explanation_.table.newest = kNow;
    explanation_.table.rows_per_day = 2000;
    Reckon();
  }

  void Reckon() {
    explanation_.table.contract = explanation_.contract;
    explanation_.reach = ReachOf(explanation_.table, explanation_.contract.max_size_mb != 0);
  }

  [[nodiscard]] std::string Text(std::size_t width = 200) const { return ExplainText(explanation_, width, false); }

  Explanation explanation_;
};

TEST_F(ExplainedTable, NamesTheOptionOfEachLimitAndWhatItMeans) {
  EXPECT_THAT(Text(), HasSubstr("Contract     device_health.SleepMetricsLog\n"));
  EXPECT_THAT(Text(), HasSubstr("Age limit    90 days (table_options.retention_days)\n"));
  EXPECT_THAT(Text(), HasSubstr("Row limit    20,000 rows (table_options.max_rows): a pass leaves 18,000\n"));
  EXPECT_THAT(Text(),
              HasSubstr("Size limit   100 MB (database_options.max_size_mb) for the whole database; switched on "
                        "by that of the database itself, 100 MB\n"));
}

TEST_F(ExplainedTable, SaysWhichLimitIsNone) {
  explanation_.contract.max_rows = explanation_.contract.retention_days = explanation_.contract.max_size_mb = 0;
  Reckon();
  EXPECT_THAT(Text(), HasSubstr("Age limit    none (table_options.retention_days is 0)"));
  EXPECT_THAT(Text(), HasSubstr("Row limit    none (table_options.max_rows is 0)"));
  EXPECT_THAT(Text(), HasSubstr("Size limit   none (database_options.max_size_mb is 0)"));
  EXPECT_THAT(Text(), HasSubstr("Bites first  none: nothing limits this table"));
}

TEST_F(ExplainedTable, SaysWhatLimitsBeyond32BitsComeTo) {
  explanation_.contract.max_rows = 2'386'092'942;
  explanation_.contract.retention_days = 49'711;
  explanation_.database.max_size_mb = 0;
  EXPECT_THAT(Text(), HasSubstr("more than 32 bits hold, so that it acts like 0.7 days"));
  EXPECT_THAT(Text(), HasSubstr("more than 32 bits hold, so that it keeps every row"));
  EXPECT_THAT(Text(), HasSubstr("switched off: that of the database itself is 0"));
}

TEST_F(ExplainedTable, SaysWhichRuleBitesFirst) {
  EXPECT_THAT(Text(), HasSubstr("Bites first  the row limit: 90 days asked, at today's rate it leaves 9 days\n"));
  explanation_.table.rows_per_day = 20;
  Reckon();
  EXPECT_THAT(Text(),
              HasSubstr("Bites first  age: 90 days asked; at today's rate the row limit would leave 900 days\n"));
  explanation_.table.rows_per_day = 0;
  Reckon();
  EXPECT_THAT(Text(), HasSubstr("age: 90 days asked; no rows come in that could reach the row limit\n"));
}

TEST_F(ExplainedTable, SaysWhatTheNextPassTakesAndWhy) {
  explanation_.table.next_pass = {.expired = 1000, .row_limit = 2000, .size_limit = 5400};
  explanation_.trim_factor = 0.3;
  explanation_.engine_mb = 120;
  EXPECT_THAT(Text(), HasSubstr("Next pass    deletes 8,400 of 21,000 rows:\n"
                                "             1,000 expired: older than 2024-02-02T00:00:00+00:00\n"
                                "             2,000 for the row limit: the oldest by rowid, down to 18,000 rows\n"
                                "             5,400 for the size limit: 30 % of the rows left, the oldest by rowid, as "
                                "the database is at 120 of 100 MB\n"));
}

TEST_F(ExplainedTable, TellsTheSizeThatTheLimitSeesBesideThatOfTheFile) {
  explanation_.engine_mb = 0;
  explanation_.file_bytes = 360'400;
  EXPECT_THAT(Text(), HasSubstr("the size limit sees the whole database as 0 MB, in whole MB; its file has 360.4 kB"));
}

TEST_F(ExplainedTable, SaysWhyARunLeavesItAlone) {
  explanation_.left_alone = "BatteryStatus has no column time";
  EXPECT_THAT(Text(), HasSubstr("a run leaves the database alone as it is, because BatteryStatus has no column time"));
}

TEST_F(ExplainedTable, TellsOfRowsThatCanNeverExpire) {
  explanation_.table.no_time.rows = 1;
  explanation_.table.unreadable.rows = 2;
  EXPECT_THAT(Text(), HasSubstr("3 rows can never expire: SQLite reads no moment from the time\n"));
}

TEST_F(ExplainedTable, TellsOfATableThatIsNotThereOnlyWhatItsContractSays) {
  explanation_.missing_file = true;
  EXPECT_THAT(Text(), HasSubstr("Now          the database has no file yet\n"));
  EXPECT_THAT(Text(), HasSubstr("Age limit"));
  EXPECT_THAT(Text(), Not(HasSubstr("Next pass")));
}

TEST_F(ExplainedTable, TellsWhenTheTimeOfARowComes) {
  explanation_.rows.push_back({.row = {.rowid = 17, .time = "2024-05-01", .moment = kNow - common::kSecondsPerDay},
                               .expires = kNow + 89 * common::kSecondsPerDay,
                               .rows_until_limit = 3000,
                               .days_until_limit = 1.5});
  EXPECT_THAT(Text(), HasSubstr("Row 17       time 2024-05-01\n"
                                "             the next pass keeps it\n"
                                "             age: goes after 2024-07-30T00:00:00+00:00\n"
                                "             row limit: goes in 1.5 days, when 3,000 more rows have come in\n"
                                "             size limit: may go once the database reaches 100 MB\n"));
}

TEST_F(ExplainedTable, TellsWhyTheTimeOfARowNeverComes) {
  explanation_.contract.max_size_mb = 0;
  explanation_.rows.push_back({.row = {.rowid = 17, .time = "yes\x1b[2J"}, .rows_until_limit = 1});
  EXPECT_THAT(Text(), HasSubstr("time yes\\x1b[2J\n"));
  EXPECT_THAT(Text(), HasSubstr("age: never: SQLite reads no moment from its time\n"));
  EXPECT_THAT(Text(), HasSubstr("row limit: goes when 1 more row has come in; none came in within the last week\n"));
  EXPECT_THAT(Text(), HasSubstr("size limit: never: there is none\n"));
}

TEST_F(ExplainedTable, TellsByWhichRuleARowGoes) {
  explanation_.table.next_pass = {.row_limit = 20, .size_limit = 5};
  for (const auto& [rule, text] : std::vector<std::pair<Rule, const char*>>{
           {Rule::kAge, "the next pass deletes it: it is older than 90 days\n"},
           {Rule::kRowLimit, "deletes it for the row limit: it is among the oldest 20 by rowid\n"},
           {Rule::kSizeLimit, "deletes it for the size limit: it is among the oldest 25 by rowid\n"}}) {
    explanation_.rows = {{.row = {.rowid = 1, .time = "2024"}, .next_pass = rule}};
    EXPECT_THAT(Text(), HasSubstr(text));
  }
}

TEST_F(ExplainedTable, FitsTheWidthOfTheTerminal) {
  explanation_.table.next_pass = {.expired = 1000, .row_limit = 2000, .size_limit = 5400};
  for (const std::size_t width : {60U, 80U}) {
    std::istringstream lines(Text(width));
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), width) << line;
    }
  }
}

}  // namespace
}  // namespace corvo::telemetry::host
