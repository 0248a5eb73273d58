#include <gmock/gmock.h>

#include <algorithm>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class StatusCommand : public RunTest {
 protected:
  HostRun Status(const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"status", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }

  nlohmann::json Database(const std::string& name) {
    const nlohmann::json databases = Status({"--json"}).Json()["databases"];
    return *std::find_if(databases.begin(), databases.end(), [&](const auto& each) { return each["name"] == name; });
  }

  nlohmann::json Table(const std::string& database, const std::string& name) {
    const nlohmann::json tables = Database(database)["tables"];
    return *std::find_if(tables.begin(), tables.end(), [&](const auto& each) { return each["table"] == name; });
  }
};

TEST_F(StatusCommand, ShowsDatabasesTablesAndTheNextRun) {
  Generate();
  const HostRun run = Status();
  EXPECT_EQ(run.exit_code, 0) << run.err;
  for (const char* text : {"DATABASE", "HealthLog", "TABLE", "OLDEST",
                           "A run now: ", "Databases without a file, which is no failure: DeviceUsage"}) {
    EXPECT_THAT(run.out, HasSubstr(text));
  }
  EXPECT_LE(std::count(run.out.begin(), run.out.end(), '\n'), 23);
}

TEST_F(StatusCommand, ForeseesWhatTheRunDeletes) {
  Generate("0.05");
  const nlohmann::json before = Status({"--json"}).Json();
  const nlohmann::json run = Run({"--json"}).Json();
  for (const nlohmann::json& database : before["databases"]) {
    for (const nlohmann::json& done : run["databases"]) {
      for (std::size_t index = 0; done["name"] == database["name"] && index < done["tables"].size(); ++index) {
        EXPECT_EQ(database["tables"][index]["next_run"], done["tables"][index]["deleted"]) << done["tables"][index];
      }
    }
  }
}

TEST_F(StatusCommand, ChecksThatEverythingIsWithinItsLimits) {
  Generate();
  EXPECT_EQ(Status({"--check"}).exit_code, 3);
  ASSERT_EQ(Run().exit_code, 0);
  const HostRun clean = Status({"--check"});
  EXPECT_EQ(clean.exit_code, 0) << clean.out;
  EXPECT_THAT(clean.out, HasSubstr("All is within its limits."));
}

TEST_F(StatusCommand, TakesRowsThatNeverExpireForAFinding) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  test::Database(File("Cache.db")).Run("UPDATE CollectorCache SET time = 'never' WHERE rowid % 2 = 0");
  const HostRun run = Status({"--check"});
  EXPECT_EQ(run.exit_code, 3);
  EXPECT_THAT(run.out, HasSubstr("Unreadable time, never expires: "));
  EXPECT_EQ(Table("Cache", "CollectorCache")["unreadable"]["sample"]["time"], "never");
}

TEST_F(StatusCommand, NarrowsToDatabasesAndShowsAllTheirTables) {
  Generate();
  const HostRun run = Status({"--all", "--database", "healthlog"});
  EXPECT_EQ(run.exit_code, 0);
  for (const char* table : {"BatteryHealthLog", "BatteryStatus", "SleepMetrics", "StorageNVMEHealthLog"}) {
    EXPECT_THAT(run.out, HasSubstr(table));
  }
  EXPECT_THAT(run.out, Not(HasSubstr("Cache")));
}

TEST_F(StatusCommand, EndsWithOneWhenADatabaseCannotBeRead) {
  Generate();
  std::filesystem::resize_file(File("Cache.db"), 1000);
  const HostRun run = Status();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cache cannot be read: damaged: "));
  EXPECT_THAT(run.out, HasSubstr("HealthLog"));
  EXPECT_EQ(Status({"--check"}).exit_code, 3);
  EXPECT_EQ(Database("Cache")["problem"]["kind"], "unfit");
}

TEST_F(StatusCommand, ReadsWhileACollectorWrites) {
  Generate();
  test::Database collector(File("HealthLog.db"));
  collector.Run("PRAGMA journal_mode=WAL; BEGIN IMMEDIATE; DELETE FROM BootHealthLog");
  const HostRun run = Status({"--busy-timeout", "0"});
  EXPECT_EQ(run.exit_code, 0) << run.out;
  EXPECT_GT(Table("HealthLog", "BootHealthLog")["rows"], 0);
}

TEST_F(StatusCommand, SaysWhenThereIsNothing) {
  std::filesystem::create_directory(data_);
  const HostRun run = Status();
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("Nothing to show: "));
  const HostRun check = Status({"--check"});
  EXPECT_EQ(check.exit_code, 0);
  EXPECT_THAT(check.err, HasSubstr("nothing was checked: " + data_ + " holds none of the databases"));
}

}  // namespace
}  // namespace corvo::test
