#include <gmock/gmock.h>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class ExplainCommand : public RunTest {
 protected:
  [[nodiscard]] HostRun Explain(const std::vector<std::string>& more) const {
    std::vector<std::string> words = {"explain", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }
};

TEST_F(ExplainCommand, ForetellsWhatTheNextRunTakesFromTheTable) {
  Generate();
  const nlohmann::json explained = Explain({"collectorcache", "--json"}).Json();
  EXPECT_EQ(explained["table"], "CollectorCache");
  const nlohmann::json run = Run({"--database", "Cache", "--json"}).Json();
  const nlohmann::json& table = run["databases"][0]["tables"][0];
  EXPECT_EQ(explained["table_now"]["rows"], table["rows_before"]);
  EXPECT_GT(explained["next_pass"]["expired"], 0);
  for (const char* rule : {"expired", "row_limit", "size_limit"}) {
    EXPECT_EQ(explained["next_pass"][rule], table["deleted"][rule]) << rule;
  }
}

TEST_F(ExplainCommand, NamesTheContractTheOptionAndTheNumberOfEachLimit) {
  std::filesystem::create_directory(data_);
  const nlohmann::json limits = Explain({"SleepMetrics", "--json"}).Json()["limits"];
  const std::string contract = "corvo.telemetry.contract.storage.device_health.SleepMetricsLog";
  const std::string database = "corvo.telemetry.contract.storage.HealthLog";
  const auto limit = [](const char* rule, const std::string& type, const char* option, int value) {
    return nlohmann::json{{"rule", rule}, {"type", type}, {"option", option}, {"value", value}};
  };
  EXPECT_EQ(limits, nlohmann::json({limit("age", contract, "table_options.retention_days", 90),
                                    limit("row_limit", contract, "table_options.max_rows", 20'000),
                                    limit("size_limit", contract, "database_options.max_size_mb", 100),
                                    limit("size_limit", database, "database_options.max_size_mb", 100)}));
}

TEST_F(ExplainCommand, ExplainsTheRowsThatAreNamed) {
  std::filesystem::create_directory(data_);
  Database(File("DeviceUsage.db"))
      .Run(
          "CREATE TABLE PowerEvents (time TEXT); INSERT INTO PowerEvents (rowid, time) VALUES (-7, '2001-01-01'), "
          "(8, datetime('now'))");
  const HostRun run = Explain({"PowerEvents", "--rowid", "8", "--rowid=-7"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, testing::ContainsRegex("Row 8 .*\n.*the next pass keeps it"));
  EXPECT_THAT(run.out, HasSubstr("Row -7       time 2001-01-01\n             the next pass deletes it"));
  const nlohmann::json rows = Explain({"PowerEvents", "--json", "--rowid", "8", "--rowid", "-7"}).Json()["rows"];
  EXPECT_EQ(rows[0]["rowid"], 8);
  EXPECT_EQ(rows[0]["deleted_by"], nullptr);
  EXPECT_EQ(rows[1]["deleted_by"], "age");
}

TEST_F(ExplainCommand, NamesRowsThatAreNotThereAndExplainsTheOthers) {
  Generate();
  const HostRun run = Explain({"CollectorCache", "--rowid", "999999", "--rowid", "1"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("\nRow 1 "));
  EXPECT_THAT(run.err, HasSubstr("CollectorCache has no row with the rowid 999999; its rowids lie between 1 and "));
  const HostRun document = Explain({"CollectorCache", "--json", "--rowid", "999999", "--rowid", "1"});
  EXPECT_EQ(document.exit_code, 1);
  EXPECT_EQ(document.Json()["rows"].size(), 1U);
  EXPECT_EQ(document.Json()["missing_rows"], nlohmann::json({999'999}));
}

TEST_F(ExplainCommand, TellsWhatToDoAboutAFileThatCannotBeRead) {
  Generate();
  Database holder(File("Cache.db"));
  holder.Run("BEGIN EXCLUSIVE");
  const HostRun run = Explain({"CollectorCache", "--busy-timeout", "0"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("Cache.db cannot be explained: another program holds it locked. Another program holds "
                                 "the database: try again"));
}

TEST_F(ExplainCommand, WantsATableOfTheCatalogue) {
  EXPECT_EQ(RunHost({"explain"}).exit_code, 2);
  const HostRun run = RunHost({"explain", "SleepMetric"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr("there is no table SleepMetric (did you mean SleepMetrics?)"));
  EXPECT_EQ(RunHost({"explain", "SleepMetrics", "--rowid", "1.5"}).exit_code, 2);
}

}  // namespace
}  // namespace corvo::test
