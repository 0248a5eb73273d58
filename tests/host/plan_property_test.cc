#include <gmock/gmock.h>

#include "host/plan_fixture.h"
#include "host/random_directory.h"

namespace corvo::test {
namespace {

using telemetry::host::DatabaseReport;
using telemetry::host::DirectoryRun;
using telemetry::host::RunReport;
using telemetry::host::TableReport;

constexpr std::uint64_t kDirectories = 250;

class PlanProperty : public PlanTest {
 protected:
  /// A way to run it, which the seed decides as well.
  static DirectoryRun RunOf(const RandomDirectory& directory, std::uint64_t seed) {
    Dice dice(seed + kDirectories);
    DirectoryRun run{.directory = directory.Path(), .source = "--data-dir", .only = {}};
    run.passes = dice.OneIn(4) ? 2 : 1;
    run.keep_going = dice.OneIn(3);
    if (dice.OneIn(5)) {
      run.only = {directory.Names().back()};
    }
    return run;
  }

  static void ExpectOldestLeft(const RunReport& plan) {
    for (const DatabaseReport& database : plan.databases) {
      for (const TableReport& table : database.tables) {
        if (!database.problem && table.oldest_left) {
          EXPECT_EQ(Database(database.path).Number("SELECT MIN(unixepoch(time)) FROM " + table.table),
                    *table.oldest_left);
        }
      }
    }
  }

  void Count(const RunReport& report) {
    for (const DatabaseReport& database : report.databases) {
      (database.problem ? problems_ : cleaned_) += 1;
      deleted_.Add(database.DeletedRows());
    }
  }

  telemetry::host::Deleted deleted_;
  int cleaned_ = 0;
  int problems_ = 0;
};

TEST_F(PlanProperty, APlanTellsWhatTheRunDoes) {
  for (std::uint64_t seed = 1; seed <= kDirectories && !HasFailure(); ++seed) {
    SCOPED_TRACE("directory " + std::to_string(seed));
    const RandomDirectory directory(seed);
    const DirectoryRun run = RunOf(directory, seed);
    const RunReport plan = PlanUntouching(run);
    const RunReport done = Run(run);
    EXPECT_EQ(Facts(plan), Facts(done));
    ExpectOldestLeft(plan);
    Count(done);
  }
  // A property of directories in which nothing happens would say nothing.
  EXPECT_GT(cleaned_, 150);
  EXPECT_GT(problems_, 20);
  EXPECT_GT(deleted_.expired, 1000);
  EXPECT_GT(deleted_.row_limit, 1000);
  EXPECT_GT(deleted_.size_limit, 1000);
}

}  // namespace
}  // namespace corvo::test
