#include <gmock/gmock.h>

#include <map>

#include "host/facts/catalogue_view.h"
#include "host/run_fixture.h"
#include "support/database.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using telemetry::host::ContractView;
using testing::HasSubstr;

class RunCommand : public RunTest {
 protected:
  /// Rows of each table, from one of the two members of a run's document.
  [[nodiscard]] static std::map<std::string, nlohmann::json> Rows(const nlohmann::json& document, const char* member) {
    std::map<std::string, nlohmann::json> rows;
    for (const auto& database : document["databases"]) {
      for (const auto& table : database["tables"]) {
        rows[table["table"]] = table[member];
      }
    }
    return rows;
  }

  const telemetry::host::CatalogueView catalogue_ = telemetry::host::ReadCatalogue();
};

TEST_F(RunCommand, LeavesEveryTableWithinItsLimitsAndShrinksTheFiles) {
  Generate("1");
  const HostRun run = Run({"--json"});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const nlohmann::json document = run.Json();
  auto before = Rows(document, "rows_before");
  auto after = Rows(document, "rows_after");
  for (const ContractView& contract : catalogue_.contracts) {
    if (after.count(contract.table) != 0 && !after[contract.table].is_null()) {
      EXPECT_LE(after[contract.table],
                contract.max_rows == 0 ? before[contract.table].get<std::int64_t>() : contract.max_rows * 9 / 10);
      EXPECT_LT(after[contract.table], before[contract.table]) << contract.table;
    }
  }
  for (const auto& database : document["databases"]) {
    EXPECT_LT(database["bytes_after"], database["bytes_before"]) << database["name"];
  }
}

TEST_F(RunCommand, CountsWhatTheFilesHold) {
  Generate();
  const nlohmann::json document = Run({"--json"}).Json();
  EXPECT_EQ(document["schema_version"], 1);
  EXPECT_EQ(document["result"], nlohmann::json::parse(R"({"category":"EC_NoError","code":0,"version":3})"));
  EXPECT_GT(document["seconds"], 0);
  for (const auto& entry : document["databases"]) {
    const std::filesystem::path file = File(entry["name"].get<std::string>() + ".db");
    EXPECT_EQ(entry["path"], file.string());
    EXPECT_EQ(entry["bytes_after"], std::filesystem::file_size(file));
    for (const auto& table : entry["tables"]) {
      if (!table["rows_after"].is_null()) {
        EXPECT_EQ(table["rows_after"], Database(file).Count(table["table"])) << table;
      }
    }
  }
}

TEST_F(RunCommand, ShowsAMissingTableAsNullAndAMissingDatabaseNotAtAll) {
  Generate();
  const auto rows = Rows(Run({"--json"}).Json(), "rows_before");
  std::size_t unknown = 0;
  for (const auto& [table, count] : rows) {
    unknown += count.is_null() ? 1U : 0U;
  }
  EXPECT_EQ(unknown, 1U);
  EXPECT_EQ(rows.size(), catalogue_.contracts.size() - 1);
}

TEST_F(RunCommand, CountsTheWriteAheadLogAsPartOfADatabase) {
  std::filesystem::create_directory(data_);
  Database database(File("Cache.db"));
  database.Run("PRAGMA journal_mode=WAL; CREATE TABLE CollectorCache (time TEXT)");
  const auto both = std::filesystem::file_size(File("Cache.db")) + std::filesystem::file_size(File("Cache.db-wal"));
  EXPECT_EQ(Run({"--json"}).Json()["databases"][0]["bytes_before"], both);
}

TEST_F(RunCommand, TellsPeopleWhatChangedAndEndsWithTheOutcome) {
  Generate();
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("HealthLog"));
  EXPECT_THAT(run.out, HasSubstr("  BatteryStatus"));
  const std::string databases = std::to_string(catalogue_.databases.size() - 1);
  EXPECT_THAT(run.out, ContainsPattern("Total .*\n\n.*\nCleaned " + databases +
                                       " databases: [0-9,]+ rows deleted, .* freed in .* s\n$"));
}

TEST_F(RunCommand, RunsSeveralPassesOfWhichTheFirstDoesTheWork) {
  Generate();
  const HostRun run = Run({"--passes", "2"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, ContainsPattern("Pass 1: [1-9][0-9,]* rows deleted"));
  EXPECT_THAT(run.out, HasSubstr("Pass 2: 0 rows deleted"));
}

TEST_F(RunCommand, LeavesForeignFilesAndTablesAlone) {
  Generate();
  Database(File("Other.db"))
      .Run("CREATE TABLE BatteryStatus (time TEXT); INSERT INTO BatteryStatus VALUES ('2001-01-01')");
  Database(File("HealthLog.db")).Run("CREATE TABLE Foreigner (time TEXT); INSERT INTO Foreigner VALUES ('2001-01-01')");
  EXPECT_EQ(Run().exit_code, 0);
  EXPECT_EQ(Database(File("Other.db")).Count("BatteryStatus"), 1);
  EXPECT_EQ(Database(File("HealthLog.db")).Count("Foreigner"), 1);
}

TEST_F(RunCommand, HasNothingToCleanInAnEmptyDirectory) {
  std::filesystem::create_directory(data_);
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.out, HasSubstr("Nothing to clean"));
  EXPECT_EQ(Run({"--json"}).Json()["databases"], nlohmann::json::array());
  EXPECT_TRUE(std::filesystem::is_empty(data_));
}

TEST_F(RunCommand, WorksInADirectoryWhoseNameIsNotAscii) {
  data_ = folder_ / "Messwerte für Gerät 機器";
  Generate();
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.Json()["databases"][0]["path"].get<std::string>(), HasSubstr("für Gerät 機器"));
}

TEST_F(RunCommand, LoadsTheModuleThatIsNamed) {
  Generate();
  EXPECT_EQ(Run({"--plugin", CORVO_CLEANUP_MODULE}).exit_code, 0);
}

}  // namespace
}  // namespace corvo::test
