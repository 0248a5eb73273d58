#include "host/samples/live_writing.h"

#include <gmock/gmock.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <future>
#include <thread>

#include "host/run_fixture.h"
#include "host/show/time_text.h"
#include "support/database.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::ContractView;
using telemetry::host::LiveResult;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Sample databases, and rows that are added to them.
class LiveWriting : public RunTest {
 protected:
  void SetUp() override { Generate("0.001"); }

  [[nodiscard]] LiveResult WriteFor(int seconds, int rate = 400) const {
    return telemetry::host::WriteLive(catalogue_, {.directory = data_, .seconds = seconds, .rate = rate});
  }

  [[nodiscard]] std::map<std::string, std::int64_t> Counts() const {
    std::map<std::string, std::int64_t> counts;
    for (const ContractView& contract : catalogue_.contracts) {
      const fs::path file = File(contract.database + ".db");
      if (fs::exists(file)) {
        Database database(file);
        if (database.Number("SELECT COUNT(*) FROM sqlite_schema WHERE name = '" + contract.table + "'") == 1) {
          counts[contract.table] = database.Count(contract.table);
        }
      }
    }
    return counts;
  }

  [[nodiscard]] std::vector<std::string> Verdicts() const {
    std::vector<std::string> verdicts;
    for (const auto& database : catalogue_.databases) {
      if (fs::exists(File(database.database + ".db"))) {
        verdicts.push_back(Database(File(database.database + ".db")).Query("PRAGMA quick_check").at(0).at(0));
      }
    }
    return verdicts;
  }

  const telemetry::host::CatalogueView catalogue_ = telemetry::host::ReadCatalogue();
};

std::int64_t Sum(const std::map<std::string, std::int64_t>& counts) {
  std::int64_t sum = 0;
  for (const auto& [table, rows] : counts) {
    sum += rows;
  }
  return sum;
}

TEST_F(LiveWriting, AddsRowsToEveryTableAtTheRateAskedFor) {
  const auto before = Counts();
  const LiveResult result = WriteFor(2);
  EXPECT_THAT(result.problems, IsEmpty());
  EXPECT_GE(result.seconds, 2);
  EXPECT_GT(result.rows, 200);
  EXPECT_LE(result.rows, static_cast<std::int64_t>(result.seconds * 400) + 1);
  const auto after = Counts();
  EXPECT_EQ(Sum(after) - Sum(before), result.rows);
  for (const auto& [table, rows] : before) {
    EXPECT_GT(after.at(table), rows) << table;
  }
  EXPECT_THAT(Verdicts(), Each("ok"));
}

TEST_F(LiveWriting, GivesRowsTheTimeOfTheirWritingInOrder) {
  const std::string start = telemetry::host::TimeText(std::time(nullptr));
  ASSERT_GT(WriteFor(2).rows, 0);
  const std::string end = telemetry::host::TimeText(std::time(nullptr));
  Database database(File("HealthLog.db"));
  const auto times = database.Query("SELECT time FROM BatteryStatus WHERE time >= '" + start + "' ORDER BY rowid");
  ASSERT_THAT(times, SizeIs(testing::Gt(3U)));
  for (std::size_t row = 0; row < times.size(); ++row) {
    EXPECT_THAT(times[row][0], MatchesPattern("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\+00:00"));
    EXPECT_LE(times[row][0], end);
    EXPECT_GE(times[row][0], times[row == 0 ? 0 : row - 1][0]);
  }
}

TEST_F(LiveWriting, LeavesSchemaAndJournalModeAsTheyAre) {
  Database database(File("HealthLog.db"));
  database.Run("PRAGMA journal_mode=WAL");
  const auto schema = database.Query("SELECT sql FROM sqlite_schema");
  ASSERT_GT(WriteFor(1).rows, 0);
  EXPECT_EQ(database.Query("SELECT sql FROM sqlite_schema"), schema);
  EXPECT_EQ(database.Query("PRAGMA journal_mode").at(0).at(0), "wal");
  EXPECT_EQ(Database(File("Cache.db")).Query("PRAGMA journal_mode").at(0).at(0), "delete");
}

TEST_F(LiveWriting, WaitsForLocksAndGoesOnElsewhere) {
  Database holder(File("Cache.db"));
  holder.Run("BEGIN EXCLUSIVE");
  const LiveResult result = WriteFor(1);
  EXPECT_GT(result.waits, 0);
  EXPECT_GT(result.rows, 0);
  EXPECT_THAT(result.problems, IsEmpty());
}

TEST_F(LiveWriting, GoesOnWithoutTablesThatGoAway) {
  auto result = std::async(std::launch::async, [this] { return WriteFor(2); });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  Database(File("HealthLog.db")).Run("PRAGMA busy_timeout=5000; DROP TABLE BatteryStatus");
  EXPECT_THAT(result.get().problems, IsEmpty());
  EXPECT_EQ(Counts().count("BatteryStatus"), 0U);
}

TEST_F(LiveWriting, TellsWhichDatabaseCannotBeWritten) {
  std::ofstream(File("Cache.db"), std::ios::trunc) << "no database, but long enough for one";
  const LiveResult result = WriteFor(1);
  ASSERT_THAT(result.problems, SizeIs(1));
  EXPECT_EQ(result.problems[0].database, "Cache");
  EXPECT_THAT(result.problems[0].reason, HasSubstr("file is not a database"));
  EXPECT_GT(result.rows, 0);
}

TEST_F(LiveWriting, FollowsGenerationAndThenAddsToWhatIsThere) {
  fs::remove_all(data_);
  const std::vector<std::string> words = {"generate", "--data-dir", data_, "--scale", "0.001", "--live", "1", "--json"};
  const nlohmann::json first = RunHost(words).Json();
  EXPECT_FALSE(first["databases"].empty());
  EXPECT_GT(first["live"]["rows"], 0);
  const nlohmann::json second = RunHost(words).Json();
  for (const char* member : {"databases", "left_out", "now"}) {
    EXPECT_FALSE(second.contains(member)) << member;
  }
  EXPECT_GT(second["live"]["rows"], 0);
  EXPECT_EQ(second["live"]["problems"], nlohmann::json::array());
}

TEST_F(LiveWriting, SaysHowMuchItWrote) {
  const HostRun run = RunHost({"generate", "--data-dir", data_, "--live", "1"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, MatchesPattern("Wrote [0-9]+ rows to the databases in .* in 1\\.[0-9] s(; .*)?\n"));
  EXPECT_EQ(RunHost({"generate", "--data-dir", data_, "--rate", "5"}).exit_code, 2);
}

// The plan's copies are of one moment, and the databases go on as if there were no plan.
TEST_F(LiveWriting, LetsPlansAndRunsDoTheirWork) {
  auto writer = std::async(std::launch::async, [this] {
    return RunHost({"generate", "--data-dir", data_, "--live", "8", "--rate", "300", "--json"});
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const auto before = Counts();
  const HostRun plan = RunHost({"plan", "--data-dir", data_, "--json"});
  const auto planned = Counts();
  EXPECT_EQ(plan.exit_code, 0) << plan.err;
  for (const auto& [table, rows] : before) {
    EXPECT_GE(planned.at(table), rows) << table;
  }
  const HostRun run = RunHost({"run", "--data-dir", data_, "--json"});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  const HostRun written = writer.get();
  EXPECT_EQ(written.exit_code, 0) << written.out << written.err;
  EXPECT_GT(written.Json()["live"]["rows"], 100);
  EXPECT_THAT(Verdicts(), Each("ok"));
}

}  // namespace
}  // namespace corvo::test
