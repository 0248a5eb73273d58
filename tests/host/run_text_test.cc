#include "host/show/run/run_text.h"

#include <gmock/gmock.h>

#include "host/report_samples.h"
#include "host/show/fold.h"

namespace corvo::telemetry::host {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using Kind = Problem::Kind;

TEST(RunText, ShowsEveryTableTheTotalsAndTheOutcome) {
  EXPECT_EQ(RunText(test::SampleReport(), false),
            "data (--data-dir)\n"
            "\n"
            "DATABASE / TABLE  ROWS BEFORE  EXPIRED  ROW LIMIT  ROWS AFTER  LOST  SIZE BEFORE  SIZE AFTER   FREED\n"
            "HealthLog               1,500      900        100         500             2.0 MB    500.0 kB  1.5 MB\n"
            "  Boot                  1,500      900        100         500  67 %\n"
            "  Sleep                     -                               -\n"
            "  Drive                     ?                               ?\n"
            "----------------------------------------------------------------------------------------------------\n"
            "Total                   1,500      900        100         500             2.0 MB    500.0 kB  1.5 MB\n"
            "\n"
            "Tables that are not there, which is no failure: Sleep\n"
            "LOST: the share of a table's rows that the rules take, where it is over half\n"
            "Cleaned 1 database: 1,000 rows deleted, 1.5 MB freed in 0.2 s\n");
}

TEST(RunText, PutsSizesIntoATableOfTheirOwnWhereTheTerminalIsNarrow) {
  EXPECT_EQ(RunText(test::SampleReport(), false, 100), RunText(test::SampleReport(), false));
  EXPECT_THAT(RunText(test::SampleReport(), false, 80),
              HasSubstr("DATABASE / TABLE   ROWS  EXPIRED  ROW LIM.  LEFT  LOST\n"
                        "HealthLog         1,500      900       100   500\n"
                        "  Boot            1,500      900       100   500  67 %\n"
                        "  Sleep               -                        -\n"
                        "  Drive               ?                        ?\n"
                        "------------------------------------------------------\n"
                        "Total             1,500      900       100   500\n"
                        "\n"
                        "DATABASE / TABLE  SIZE BEFORE  SIZE AFTER   FREED\n"
                        "HealthLog              2.0 MB    500.0 kB  1.5 MB\n"
                        "-------------------------------------------------\n"
                        "Total                  2.0 MB    500.0 kB  1.5 MB\n"));
}

TEST(RunText, LeavesOutColumnsAndFoldsSentencesWhereItIsNarrower) {
  RunReport report = test::SampleReport();
  report.databases[0].problem = test::SampleProblem(Kind::kInterrupted, "interrupted", 9);
  report.databases[0].name = "Log";
  report.signal = 2;
  constexpr std::size_t kWidth = 40;
  const std::string text = RunText(report, false, kWidth);
  EXPECT_EQ(FoldedLines(text, kWidth), text);
  EXPECT_THAT(text, HasSubstr("DATABASE / TABLE    ROWS  LEFT  LOST\n"));
  EXPECT_THAT(text, HasSubstr("DATABASE / TABLE   SIZE AFTER   FREED\n"));
  EXPECT_THAT(text, HasSubstr("Interrupted: cleaned 0 of 1 database;\nnot cleaned: Log (interrupted)\n"));
}

TEST(RunText, GivesNoSumOfRowsThatCouldNotAllBeCounted) {
  RunReport report = test::SampleReport();
  report.databases[0].tables.push_back({.table = "Fan", .rows_before = 30});
  const std::string text = RunText(report, false);
  EXPECT_THAT(text, HasSubstr("HealthLog               1,530      900        100           ?"));
  EXPECT_THAT(text, HasSubstr("Total                   1,530      900        100           ?"));
}

TEST(RunText, OfAPlanSaysWhatWouldBe) {
  RunReport report = test::SampleReport();
  report.planned = true;
  report.databases[0].tables[0].oldest_left = 1'714'521'600;
  const std::string text = RunText(report, false);
  EXPECT_THAT(text, HasSubstr("data (--data-dir), planned on copies: nothing there was changed\n"));
  EXPECT_THAT(text, HasSubstr("OLDEST LEFT"));
  EXPECT_THAT(text, HasSubstr("2024-05-01"));
  EXPECT_THAT(text, EndsWith("Would clean 1 database: 1,000 rows would go, 1.5 MB would be freed\n"));
}

TEST(RunText, SaysForEachOfSeveralPassesWhatItDid) {
  RunReport report = test::SampleReport();
  report.passes.push_back({.result = {}, .rows_deleted = 1, .seconds = 0.1, .database = "HealthLog"});
  EXPECT_THAT(RunText(report, false), HasSubstr("Pass 1: 1,000 rows deleted in 0.2 s\n"
                                                "Pass 2 over HealthLog: 1 row deleted in 0.1 s\n"));
}

TEST(RunText, SaysWhichDatabaseWasNotCleanedWhyAndWhatToDo) {
  RunReport report = test::SampleReport();
  report.databases.push_back({.name = "Cache",
                              .path = "Cache.db",
                              .tables = {},
                              .problem = test::SampleProblem(Kind::kUnfit, "damaged: file is not a database", 26)});
  EXPECT_THAT(RunText(report, false),
              EndsWith("Cache: The file is no SQLite database, or an encrypted one, and stays as it is.\n"
                       "Find out who wrote it. To do without it, stop its collector, keep a copy and\n"
                       "move it away with its -journal, -wal and -shm: its collector makes a new one.\n"
                       "Cleaned 1 of 2 databases; not cleaned: Cache (damaged: file is not a database)\n"
                       "1,000 rows deleted, 1.5 MB freed in 0.2 s\n"));
  EXPECT_THAT(RunText(report, false), HasSubstr("Cache (not cleaned)"));
}

TEST(RunText, GivesTheSameAdviceOnceForAllItsDatabases) {
  RunReport report = test::SampleReport();
  const Problem busy = test::SampleProblem(Kind::kBusy, "another program holds it locked", 5);
  report.databases = {{.name = "Cache", .path = "Cache.db", .tables = {}, .problem = busy},
                      {.name = "HealthLog", .path = "HealthLog.db", .tables = {}, .problem = busy}};
  const std::string text = RunText(report, false);
  EXPECT_THAT(text, HasSubstr("Cache, HealthLog: Another program holds"));
  EXPECT_THAT(text,
              HasSubstr("Cleaned 0 of 2 databases; not cleaned: Cache (another program holds it locked), HealthLog ("));
}

TEST(RunText, SaysWithWhichStatementAPassFailed) {
  RunReport report = test::SampleReport();
  report.passes.back().result = test::StorageFailure(1, "no such column: time");
  report.passes.back().failure = FailedStatement{"/data/HealthLog.db", "DELETE FROM Boot", report.passes.back().result};
  report.databases[0].problem = test::SampleProblem(Kind::kFailed, "no such column: time in: DELETE FROM Boot", 1);
  const std::string text = RunText(report, false);
  EXPECT_THAT(text,
              HasSubstr("The pass failed in /data/HealthLog.db: no such column: time (EC_Custom 1); the statement "
                        "was DELETE FROM Boot\n"));
  EXPECT_THAT(text,
              HasSubstr("Cleaned 0 of 1 database; not cleaned: HealthLog (no such column: time in: DELETE FROM Boot)"));
}

TEST(RunText, ShowsRowsOfOthersAsTheirsAndAFileThatGrewAsGrown) {
  RunReport report = test::SampleReport();
  report.databases[0].tables[0].rows_after = 1555;
  report.databases[0].bytes_after = 2'500'000;
  const std::string text = RunText(report, false);
  EXPECT_THAT(text, HasSubstr("BY OTHERS"));
  EXPECT_THAT(text, HasSubstr("+1,055"));
  EXPECT_THAT(text, HasSubstr("grew 500.0 kB"));
  EXPECT_THAT(text, EndsWith("Cleaned 1 database: 1,000 rows deleted, grew 500.0 kB in 0.2 s\n"));
}

TEST(RunText, ShowsRowsThatWentForTheSizeLimit) {
  RunReport report = test::SampleReport();
  report.databases[0].tables[0].deleted = {.size_limit = 1000};
  const std::string text = RunText(report, false);
  EXPECT_THAT(text, HasSubstr("SIZE LIMIT"));
  EXPECT_THAT(text, Not(HasSubstr("EXPIRED")));
}

TEST(RunText, MarksWhatLostMoreThanHalfOfItsRowsAndNothingElse) {
  RunReport report = test::SampleReport();
  report.databases[0].tables[0].deleted = {.expired = 750};
  EXPECT_THAT(RunText(report, false), Not(HasSubstr("LOST")));
  report.databases[0].tables[0].deleted = {.expired = 751};
  EXPECT_THAT(RunText(report, false), HasSubstr("50 %"));
}

TEST(RunText, SaysThatTheRunWasInterrupted) {
  RunReport report = test::SampleReport();
  report.signal = 2;
  report.databases[0].problem = test::SampleProblem(Kind::kInterrupted, "interrupted", 9);
  EXPECT_THAT(RunText(report, false),
              HasSubstr("Interrupted: cleaned 0 of 1 database; not cleaned: HealthLog (interrupted)\n"));
}

TEST(Failures, AreTheReasonsTheAdviceAndTheOutcomeALineEach) {
  RunReport report = test::SampleReport();
  report.databases[0].problem = test::SampleProblem(Kind::kBusy, "another program holds it locked", 5);
  const std::vector<std::string> lines = Failures(report);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[0], testing::StartsWith("HealthLog: Another program holds the database"));
  EXPECT_EQ(lines[1], "Cleaned 0 of 1 database; not cleaned: HealthLog (another program holds it locked)");
}

TEST(RunText, SaysThatNoneOfTheNamedDatabasesIsThere) {
  RunReport report = test::SampleReport();
  report.databases.clear();
  report.narrowed = true;
  EXPECT_EQ(RunText(report, false),
            "Nothing to clean: data (--data-dir) holds none of the databases that were named\n");
}

TEST(RunText, SaysWhenThereWasNothingToClean) {
  RunReport report = test::SampleReport();
  report.databases.clear();
  EXPECT_EQ(RunText(report, false), "Nothing to clean: data (--data-dir) holds none of the catalogue's databases\n");
}

TEST(RunText, SendsNoControlCharacterToATerminal) {
  RunReport report = test::SampleReport();
  report.databases[0].problem = test::SampleProblem(Kind::kUnfit, "a \x1b[2J table", 23);
  EXPECT_THAT(RunText(report, false), Not(HasSubstr("\x1b")));
}

TEST(RunText, IsColouredOnlyWhenAskedTo) {
  EXPECT_THAT(RunText(test::SampleReport(), false), Not(HasSubstr("\x1b")));
  EXPECT_THAT(RunText(test::SampleReport(), true), HasSubstr("\x1b[1m"));
}

}  // namespace
}  // namespace corvo::telemetry::host
