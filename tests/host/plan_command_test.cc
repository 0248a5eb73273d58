// A run that is only foreseen.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "host/cli/loss_limit.h"
#include "host/platform/instance_lock.h"
#include "host/report_samples.h"
#include "host/run_fixture.h"
#include "host/show/failure.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// What a document says of each table but times.
json Tables(const json& document) {
  json tables;
  for (const json& database : document["databases"]) {
    for (const json& table : database["tables"]) {
      tables[table["table"].get<std::string>()] = {table["rows_before"], table["rows_after"], table["deleted"]};
    }
    tables[database["name"].get<std::string>()] = {database["bytes_before"], database["bytes_after"]};
  }
  return tables;
}

class PlanCommand : public RunTest {
 protected:
  HostRun Plan(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"plan", "--data-dir", data_});
    return RunHost(more, {"SQLITE_TMPDIR=" + place_.Path().string(), "TMP=" + place_.Path().string()});
  }

  /// Each file of the directory with its time of last change.
  [[nodiscard]] std::map<std::string, fs::file_time_type> Files() const {
    std::map<std::string, fs::file_time_type> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(data_)) {
      files[entry.path().filename().string()] = entry.last_write_time();
    }
    return files;
  }

  TempDir place_;
};

TEST_F(PlanCommand, ForeseesTheRunToTheRowAndToTheByte) {
  Generate("0.1");
  const auto before = Files();

  const HostRun plan = Plan({"--json"});
  EXPECT_EQ(plan.exit_code, 0) << plan.err;
  EXPECT_EQ(Files(), before);
  EXPECT_TRUE(fs::is_empty(place_.Path()));

  const json planned = plan.Json();
  const json done = Run({"--json"}).Json();
  EXPECT_EQ(planned["planned"], true);
  EXPECT_EQ(done["planned"], false);
  EXPECT_EQ(Tables(planned), Tables(done));
  EXPECT_EQ(planned["databases"][0]["path"], done["databases"][0]["path"]);
}

TEST_F(PlanCommand, TellsTheOldestRowThatWouldBeLeft) {
  Generate();
  const json table = Plan({"--json", "--database", "Cache"}).Json()["databases"][0]["tables"][0];
  ASSERT_EQ(Run().exit_code, 0);
  EXPECT_EQ(
      table["oldest_left"].get<std::string>().substr(0, 19),
      Database(File("Cache.db")).Query("SELECT strftime('%Y-%m-%dT%H:%M:%S', MIN(time)) FROM CollectorCache")[0][0]);
}

TEST_F(PlanCommand, SaysThatNothingWasChanged) {
  Generate();
  const HostRun plan = Plan();
  EXPECT_THAT(plan.out, HasSubstr("planned on copies: nothing there was changed"));
  EXPECT_THAT(plan.out, HasSubstr("Would clean 5 databases: "));
  EXPECT_THAT(plan.out, Not(HasSubstr(place_.Path().string())));
}

TEST_F(PlanCommand, IsWhatADryRunIs) {
  Generate();
  const json plan = Plan({"--json"}).Json();
  const json dry_run = Run({"--dry-run", "--json"}).Json();
  EXPECT_EQ(dry_run["planned"], true);
  EXPECT_EQ(Tables(dry_run), Tables(plan));
}

TEST_F(PlanCommand, IsAFindingWhenSomethingWouldGoAndThatIsAskedFor) {
  Generate();
  EXPECT_EQ(Plan().exit_code, 0);
  EXPECT_EQ(Plan({"--exit-code"}).exit_code, 3);
  ASSERT_EQ(Run().exit_code, 0);
  EXPECT_EQ(Plan({"--exit-code"}).exit_code, 0);
}

TEST_F(PlanCommand, SaysWhatARunWouldLeaveAlone) {
  Generate();
  Database(File("Cache.db")).Run("DROP TABLE CollectorCache; CREATE TABLE CollectorCache(id INTEGER)");
  const HostRun plan = Plan();
  EXPECT_EQ(plan.exit_code, 1);
  EXPECT_THAT(plan.out,
              HasSubstr("Would clean 4 of 5 databases; not cleaned: Cache (CollectorCache has no column time)"));
}

TEST_F(PlanCommand, WorksWhileAnotherRunHoldsTheDirectory) {
  Generate();
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  ASSERT_TRUE(lock);
  EXPECT_EQ(Plan().exit_code, 0);
}

TEST_F(PlanCommand, CountsWhatStandsInALogOnly) {
  Generate();
  Database collector(File("Cache.db"));
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO CollectorCache(time) VALUES (datetime('now'))");
  const std::int64_t rows = collector.Count("CollectorCache");
  const json plan = Plan({"--json", "--database", "Cache"}).Json();
  EXPECT_EQ(plan["databases"][0]["tables"][0]["rows_before"], rows);
  EXPECT_EQ(collector.Query("PRAGMA journal_mode")[0][0], "wal");
}

class MaxLoss : public RunTest {};

TEST_F(MaxLoss, KeepsARunFromTakingMore) {
  Generate();
  const std::int64_t rows = Database(File("Cache.db")).Count("CollectorCache");
  const HostRun run = Run({"--max-loss", "5"});
  EXPECT_EQ(run.exit_code, 3);
  EXPECT_THAT(run.err, HasSubstr("nothing was deleted: "));
  EXPECT_THAT(run.err, testing::ContainsRegex(" would lose ..\\.. % \\("));
  EXPECT_THAT(run.err, HasSubstr("--max-loss allows 5 %"));
  EXPECT_EQ(Database(File("Cache.db")).Count("CollectorCache"), rows);
}

TEST_F(MaxLoss, IsAFailureOfItsOwnInTheDocument) {
  Generate();
  const json document = Run({"--max-loss", "5", "--json"}).Json();
  EXPECT_EQ(document["result"]["code"], 3);
  EXPECT_EQ(document["databases"], json::array());
}

TEST_F(MaxLoss, LetsARunTakeWhatItAllows) {
  Generate();
  const HostRun run = Run({"--max-loss", "90"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Cleaned 5 databases"));
}

TEST_F(MaxLoss, IsNoMatterOfADatabaseThatARunLeavesAlone) {
  Generate();
  std::ofstream(File("HealthLog.db"), std::ios::trunc) << "this is no database, but it is long enough to look at";
  const HostRun run = Run({"--max-loss", "90"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 4 of 5 databases"));
}

TEST_F(MaxLoss, KeepsARunFromWhatCouldNotBePlannedFor) {
  Generate();
  Database other(File("HealthLog.db"));
  const std::int64_t rows = Database(File("Cache.db")).Count("CollectorCache");
  other.Run("BEGIN EXCLUSIVE");
  const HostRun run = Run({"--max-loss", "90", "--busy-timeout", "0"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("nothing was deleted: what HealthLog would lose cannot be foreseen"));
  EXPECT_EQ(Database(File("Cache.db")).Count("CollectorCache"), rows);
}

TEST_F(MaxLoss, CanBeOverruled) {
  Generate();
  EXPECT_EQ(Run({"--max-loss", "5", "--force"}).exit_code, 0);
}

TEST_F(MaxLoss, IsAShareOfAHundredAndForRunsThatClean) {
  EXPECT_EQ(Run({"--max-loss", "5", "--dry-run"}).exit_code, 2);
  EXPECT_EQ(Run({"--max-loss", "101"}).exit_code, 2);
  EXPECT_EQ(Run({"--max-loss", "most"}).exit_code, 2);
}

/// Whether a run may begin after a plan that could not be made for one database.
bool IsNoMatter(const telemetry::host::Problem& problem) {
  telemetry::host::RunReport plan = SampleReport();
  plan.databases[0].problem = problem;
  try {
    telemetry::host::RequireLittleLoss(plan, 100);
    return true;
  } catch (const telemetry::host::CommandFailure& failure) {
    EXPECT_EQ(failure.Code(), telemetry::host::kPassFailed);
    return false;
  }
}

TEST(MaxLossWithoutAPlan, IsNoMatterOnlyWhereARunWouldMeetTheSame) {
  using Kind = telemetry::host::Problem::Kind;
  using Cause = telemetry::host::Problem::Cause;
  EXPECT_TRUE(IsNoMatter(SampleProblem(Kind::kUnfit, "damaged", 11)));
  EXPECT_TRUE(IsNoMatter(SampleProblem(Kind::kUnfit, "Boot has no column time")));
  EXPECT_TRUE(IsNoMatter(SampleProblem(Kind::kCannotOpen, "permission denied", 14)));
  EXPECT_FALSE(IsNoMatter(SampleProblem(Kind::kUnfit, "it cannot be copied: disk I/O error", 10)));
  EXPECT_FALSE(IsNoMatter(SampleProblem(Kind::kUnfit, "looking at it took longer than the time limit", 9)));
  EXPECT_FALSE(IsNoMatter(SampleProblem(Kind::kUnfit, "out of memory", 7)));
  EXPECT_FALSE(IsNoMatter({Kind::kCannotOpen, "", StorageFailure(14, ""), Cause::kNoFileHandles}));
  EXPECT_FALSE(IsNoMatter(SampleProblem(Kind::kBusy, "another program holds it locked", 5)));
}

}  // namespace
}  // namespace corvo::test
