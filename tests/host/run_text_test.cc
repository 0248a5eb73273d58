#include "host/show/run_text.h"

#include <gmock/gmock.h>

#include "host/report_samples.h"

namespace corvo::telemetry::host {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(RunText, ShowsEveryTableTheTotalsAndTheOutcome) {
  EXPECT_EQ(RunText(test::SampleReport(), false),
            "DATABASE / TABLE  ROWS BEFORE  AFTER  DELETED  SIZE BEFORE     AFTER   FREED\n"
            "HealthLog               1,500    500    1,000       2.0 MB  500.0 kB  1.5 MB\n"
            "  Boot                  1,500    500    1,000\n"
            "  Sleep                     -      -\n"
            "  Drive                     ?      ?\n"
            "----------------------------------------------------------------------------\n"
            "Total                   1,500    500    1,000       2.0 MB  500.0 kB  1.5 MB\n"
            "\n"
            "Cleaned 1 database: 1,000 rows deleted, 1.5 MB freed in 0.2 s\n");
}

TEST(RunText, SaysForEachOfSeveralPassesWhatItDid) {
  RunReport report = test::SampleReport();
  report.passes.push_back({.result = {}, .rows_deleted = 1, .seconds = 0.1, .failed_database = ""});
  EXPECT_THAT(RunText(report, false), HasSubstr("Pass 1: 1,000 rows deleted in 0.2 s\n"
                                                "Pass 2: 1 row deleted in 0.1 s\n"));
}

TEST(RunText, SaysWhereAPassFailedWhyAndWhatToDo) {
  RunReport report = test::SampleReport();
  report.passes.back().result = test::StorageFailure(26, "file is not a database");
  report.passes.back().failed_database = "/data/HealthLog.db";
  EXPECT_THAT(
      RunText(report, false),
      EndsWith(
          "The pass failed in /data/HealthLog.db: file is not a database (EC_Custom 26)\n"
          "The file is damaged and stays as it is. Keep a copy; the rows that can still be read come out as SQL with\n"
          "sqlite3 FILE .recover. Then move it away: its collector makes a new one.\n"));
}

TEST(RunText, SaysWhenThereWasNothingToClean) {
  RunReport report = test::SampleReport();
  report.before.clear();
  report.after.clear();
  EXPECT_EQ(RunText(report, false), "Nothing to clean: the directory holds none of the catalogue's databases\n");
}

TEST(RunText, IsColouredOnlyWhenAskedTo) {
  EXPECT_THAT(RunText(test::SampleReport(), false), Not(HasSubstr("\x1b")));
  EXPECT_THAT(RunText(test::SampleReport(), true), HasSubstr("\x1b[1m"));
}

}  // namespace
}  // namespace corvo::telemetry::host
