#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

#include "host/facts/record/history.h"
#include "host/platform/instance_lock.h"
#include "host/run_fixture.h"
#include "host/show/fold.h"
#include "host/show/verify/verify_text.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// Generated databases after a run, in which a test plants what breaks a promise.
/// A database of which a run promised something that is broken, in many words.
telemetry::host::Verification BrokenPromise() {
  using namespace telemetry::host;
  DatabaseCheck check{.name = "DeviceProfileEvents", .path = "DeviceProfileEvents.db", .run = LastRun{}};
  check.outcomes.Set(Promise::kCleaned, Outcome::kBroken);
  check.breaches = {{.promise = Promise::kCleaned, .reason = "it is held by another program, as it has been before"}};
  Verification verification{.directory = "/data", .directory_source = "--data-dir", .now = 0};
  verification.databases = {check};
  return verification;
}

TEST(VerifyText, KeepsToTheWidth) {
  using telemetry::host::FoldedLines;
  for (const std::size_t width : {40U, 80U}) {
    const std::string text = VerifyText(BrokenPromise(), width, false);
    EXPECT_EQ(FoldedLines(text, width), text);
    EXPECT_THAT(text, HasSubstr("BROKEN"));
  }
}

class VerifyCommand : public RunTest {
 protected:
  void SetUp() override {
    Generate();
    ASSERT_EQ(Run().exit_code, 0);
  }

  [[nodiscard]] HostRun Verify(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"verify", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }

  void Plant(const std::string& file, const std::string& sql) const { Database(File(file)).Run(sql); }

  /// What breaks a promise, which is the only one that is broken.
  [[nodiscard]] json TheBreach(const std::string& promise) const {
    const HostRun run = Verify({"--json"});
    EXPECT_EQ(run.exit_code, 3) << run.out << run.err;
    const json document = run.Json();
    json breaches = json::array();
    for (const json& database : document["databases"]) {
      for (const json& breach : database["breaches"]) {
        breaches.push_back(breach);
        EXPECT_EQ(database["promises"][promise], "broken");
      }
    }
    EXPECT_EQ(breaches.size(), 1u) << breaches;
    json breach = breaches.empty() ? json::object() : breaches[0];
    EXPECT_EQ(breach["promise"], promise);
    return breach;
  }

  [[nodiscard]] std::map<std::string, std::pair<std::string, fs::file_time_type>> Files() const {
    std::map<std::string, std::pair<std::string, fs::file_time_type>> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(data_)) {
      std::ostringstream text;
      text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      files[entry.path().filename().string()] = {text.str(), entry.last_write_time()};
    }
    return files;
  }
};

/// A statement that adds rows of one time.
std::string Add(const std::string& table, int rows, const std::string& time) {
  return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
         ") INSERT INTO " + table + " (time) SELECT " + time + " FROM n";
}

const char* const kNow = "strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now')";
const char* const kYesterday = "strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now', '-1 day')";

TEST_F(VerifyCommand, FindsEveryPromiseOfAnHonestRunKeptAndChangesNothing) {
  const auto before = Files();
  const HostRun run = Verify();
  EXPECT_EQ(run.exit_code, 0) << run.out;
  EXPECT_THAT(run.out, HasSubstr("No broken promise in 5 databases"));
  EXPECT_THAT(run.out, HasSubstr("After the run of "));
  EXPECT_EQ(Verify({"--json"}).exit_code, 0);
  EXPECT_EQ(Files(), before);
}

TEST_F(VerifyCommand, FindsARowBeyondItsLimit) {
  Plant("Cache.db", "INSERT INTO CollectorCache (rowid, time) VALUES (5000, '2001-02-03T04:05:06+00:00')");
  const json breach = TheBreach("none_too_old");
  EXPECT_EQ(breach["table"], "CollectorCache");
  EXPECT_EQ(breach["number"], 1);
  EXPECT_EQ(breach["rowid"], 5000);
  EXPECT_EQ(breach["time"], "2001-02-03T04:05:06+00:00");
  EXPECT_THAT(Verify().out, HasSubstr("CollectorCache: row 5000 is older than 30 days (2001-02-03T04:05:06+00:00)"));
}

TEST_F(VerifyCommand, FindsOneRowTooMany) {
  Database database(File("DeviceProfile.db"));
  const auto missing = static_cast<int>(9'000 - database.Count("HwTpm"));
  database.Run(Add("HwTpm", missing, kYesterday));
  EXPECT_EQ(Verify().exit_code, 0);
  database.Run(Add("HwTpm", 1, kYesterday));
  const json breach = TheBreach("within_limit");
  EXPECT_EQ(breach["table"], "HwTpm");
  EXPECT_EQ(breach["number"], 1);
  EXPECT_EQ(breach["limit"], 9'000);
}

TEST_F(VerifyCommand, FindsARowGoneThatNoRuleNamed) {
  Plant("HealthLog.db", "DELETE FROM BatteryHealthLog WHERE rowid = (SELECT MAX(rowid) FROM BatteryHealthLog)");
  const json breach = TheBreach("nothing_lost");
  EXPECT_EQ(breach["table"], "BatteryHealthLog");
  EXPECT_EQ(breach["number"], 1);
}

TEST_F(VerifyCommand, FindsAFreePage) {
  Plant("Cache.db", "CREATE TABLE Junk (x); INSERT INTO Junk VALUES (zeroblob(10000)); DROP TABLE Junk");
  EXPECT_GE(TheBreach("no_free_pages")["number"], 1);
}

TEST_F(VerifyCommand, FindsADamagedPage) {
  const std::int64_t page =
      Database(File("HealthLog.db")).Number("SELECT rootpage FROM sqlite_schema WHERE name = 'BatteryHealthLog'");
  std::fstream file(File("HealthLog.db"), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp((page - 1) * 4096);
  file << std::string(100, '\x7f') << std::flush;
  EXPECT_EQ(TheBreach("sound")["table"], nullptr);
  EXPECT_THAT(Verify().out, HasSubstr("sqlite3 COPY .recover"));
}

TEST_F(VerifyCommand, FindsATableAndAFileGone) {
  Plant("HealthLog.db", "DROP TABLE SleepMetrics; VACUUM");
  EXPECT_THAT(TheBreach("nothing_lost")["text"], HasSubstr("SleepMetrics: the table is gone, with the "));
  fs::remove(File("HealthLog.db"));
  EXPECT_THAT(TheBreach("nothing_lost")["text"], HasSubstr("the file is gone, with the "));
}

TEST_F(VerifyCommand, TakesRowsOfCollectorsForNoBreach) {
  Plant("DeviceProfile.db", "PRAGMA journal_mode = WAL");
  Database collector(File("DeviceProfile.db"));
  collector.Run(Add("HwTpm", 9'500, kNow));
  collector.Run("BEGIN IMMEDIATE; " + Add("HwTpm", 1, kNow));
  const HostRun run = Verify();
  EXPECT_EQ(run.exit_code, 0) << run.out;
  EXPECT_THAT(run.out, HasSubstr("9,500 rows came in since, which no limit\ncounts\n"));
}

TEST_F(VerifyCommand, TellsADatabaseThatTheLastRunDidNotClean) {
  {
    Database other(File("Cache.db"));
    other.Run("BEGIN EXCLUSIVE");
    EXPECT_EQ(Run({"--busy-timeout", "0"}).exit_code, 1);
  }
  EXPECT_THAT(TheBreach("cleaned")["text"], HasSubstr("did not clean it: another program holds it locked"));
  EXPECT_EQ(Verify({"--database", "HealthLog"}).exit_code, 0);
}

TEST_F(VerifyCommand, HoldsEachDatabaseAgainstTheLastRunThatVisitedIt) {
  ASSERT_EQ(Run({"--database", "Cache"}).exit_code, 0);
  Plant("HealthLog.db", "DELETE FROM BatteryHealthLog");
  EXPECT_EQ(Verify({"--database", "Cache"}).exit_code, 0);
  EXPECT_EQ(Verify({"--database", "HealthLog"}).exit_code, 3);
}

TEST_F(VerifyCommand, ChecksWhatItCanWithoutARecord) {
  fs::remove(File(telemetry::host::kHistoryFile));
  const HostRun run = Verify({"--database", "Cache"});
  EXPECT_EQ(run.exit_code, 0) << run.out;
  EXPECT_THAT(run.out, HasSubstr("No run is recorded"));
}

TEST_F(VerifyCommand, CallsNothingBrokenThatNoRunHasPromised) {
  fs::remove(File(telemetry::host::kHistoryFile));
  Plant("Cache.db", Add("CollectorCache", 1, "'2001-01-01'"));
  const HostRun run = Verify({"--database", "Cache"});
  EXPECT_EQ(run.exit_code, 3);
  EXPECT_THAT(run.out, HasSubstr("not yet"));
  EXPECT_THAT(run.out, Not(HasSubstr("BROKEN")));
  EXPECT_THAT(run.out, HasSubstr("1 finding in 1 of 1 database, with no run on record\n"));
}

TEST_F(VerifyCommand, NamesTheRunThatIsAtWork) {
  EXPECT_EQ(Verify().err, "");
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  EXPECT_THAT(Verify().err, HasSubstr("a run is at work in " + data_ + ": process "));
}

TEST_F(VerifyCommand, SaysThatTheRecordCannotBeRead) {
  fs::remove(File(telemetry::host::kHistoryFile));
  fs::create_directory(File(telemetry::host::kHistoryFile));
  const HostRun run = Verify();
  EXPECT_EQ(run.exit_code, 1) << run.out;
  EXPECT_THAT(run.out, HasSubstr("The record of the runs cannot be read:"));
  EXPECT_THAT(run.out, HasSubstr("not all could be seen"));
  EXPECT_EQ(Verify({"--json"}).Json()["complete"], false);
}

TEST_F(VerifyCommand, LetsNoFileSpeakToTheTerminal) {
  Plant("Cache.db", "INSERT INTO CollectorCache (time) VALUES ('2001-01-01' || char(0) || char(27) || '[2J')");
  Plant("HealthLog.db", "DROP TABLE SleepMetrics; CREATE VIEW SleepMetrics AS SELECT '2001-01-01' AS time");
  const HostRun run = Verify();
  EXPECT_EQ(run.exit_code, 3);
  EXPECT_THAT(run.out + run.err, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace corvo::test
