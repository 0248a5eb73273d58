#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>

#include <fstream>
#include <set>

#include "host/facts/catalogue_view.h"
#include "host/host_process.h"
#include "host/platform/instance_lock.h"
#include "support/database.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::ContractView;
using testing::HasSubstr;
using Words = std::vector<std::string>;

/// A folder that tests generate into, small and fast unless they ask for more.
class GenerateCommand : public testing::Test {
 protected:
  HostRun Generate(const Words& more = {"--scale", "0.01"}) {
    Words words = {"generate", "--data-dir", data_, "--now", "2024-05-01"};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }

  /// Every table's rows, in the order of the catalogue.
  [[nodiscard]] std::vector<Row> Content() const {
    std::vector<Row> rows;
    for (const ContractView& contract : catalogue_.contracts) {
      if (Exists(contract)) {
        const auto more = Database(File(contract)).Query("SELECT * FROM " + contract.table);
        rows.insert(rows.end(), more.begin(), more.end());
      }
    }
    return rows;
  }

  [[nodiscard]] fs::path File(const ContractView& contract) const {
    return fs::path(data_) / (contract.database + ".db");
  }

  [[nodiscard]] bool Exists(const ContractView& contract) const {
    return fs::exists(File(contract)) &&
           Database(File(contract)).Number("SELECT COUNT(*) FROM sqlite_master WHERE name='" + contract.table + "'") ==
               1;
  }

  [[nodiscard]] std::vector<ContractView> MissingContracts() const {
    std::vector<ContractView> missing;
    for (const ContractView& contract : catalogue_.contracts) {
      if (!Exists(contract)) {
        missing.push_back(contract);
      }
    }
    return missing;
  }

  const telemetry::host::CatalogueView catalogue_ = telemetry::host::ReadCatalogue();
  TempDir folder_;
  const std::string data_ = folder_ / "data";
};

TEST_F(GenerateCommand, MakesTheDirectoryAndSaysWhatItWrote) {
  const HostRun run = Generate();
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(fs::is_directory(data_));
  const std::string databases = std::to_string(catalogue_.databases.size() - 1);
  EXPECT_THAT(run.out, HasSubstr("Generated " + databases + " databases in " + data_));
  EXPECT_THAT(run.out, HasSubstr("seed 1, up to 2024-05-01T00:00:00+00:00"));
}

TEST_F(GenerateCommand, WritesTheSameContentForTheSameSeed) {
  Generate({"--scale", "0.01", "--seed", "7"});
  const auto first = Content();
  Generate({"--scale", "0.01", "--seed", "7", "--force"});
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(Content(), first);
}

TEST_F(GenerateCommand, WritesOtherContentForAnotherSeed) {
  Generate({"--scale", "0.01", "--seed", "7"});
  const auto first = Content();
  Generate({"--scale", "0.01", "--seed", "8", "--force"});
  EXPECT_EQ(Content().size(), first.size());
  EXPECT_NE(Content(), first);
}

TEST_F(GenerateCommand, RefusesADirectoryThatHoldsDatabases) {
  fs::create_directory(data_);
  Database(fs::path(data_) / "Other.db").Run("CREATE TABLE T (a)");
  const HostRun run = Generate();
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr("--force"));
  EXPECT_FALSE(fs::exists(fs::path(data_) / "Cache.db"));
}

TEST_F(GenerateCommand, ReplacesTheCataloguesDatabasesAndNoOthersWhenForced) {
  fs::create_directory(data_);
  Database(fs::path(data_) / "Other.db").Run("CREATE TABLE T (a)");
  Database(fs::path(data_) / "Cache.db").Run("CREATE TABLE Old (a)");
  std::ofstream(fs::path(data_) / "Cache.db-journal") << "left by a crash";
  EXPECT_EQ(Generate({"--scale", "0.01", "--force"}).exit_code, 0);
  EXPECT_EQ(Database(fs::path(data_) / "Other.db").Count("T"), 0);
  EXPECT_EQ(Database(fs::path(data_) / "Cache.db").Number("SELECT COUNT(*) FROM sqlite_master WHERE name='Old'"), 0);
  EXPECT_FALSE(fs::exists(fs::path(data_) / "Cache.db-journal"));
}

TEST_F(GenerateCommand, ReplacesNothingWhileARunIsAtWork) {
  fs::create_directory(data_);
  Database(fs::path(data_) / "Cache.db").Run("CREATE TABLE Old (a)");
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  const HostRun run = Generate({"--force"});
  EXPECT_EQ(run.exit_code, 11);
  EXPECT_THAT(run.err, testing::HasSubstr("nothing was generated: a run is at work in "));
  EXPECT_EQ(Database(fs::path(data_) / "Cache.db").Count("Old"), 0);
}

TEST_F(GenerateCommand, CannotMakeADirectoryWhereAFileIs) {
  std::ofstream(data_) << "a file";
  const HostRun run = Generate();
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr(data_));
}

TEST_F(GenerateCommand, CannotMakeADirectoryBelowAFile) {
  std::ofstream(data_) << "a file";
  const HostRun run = RunHost({"generate", "--data-dir", data_ + "/below"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr(data_ + " is in the way"));
}

TEST_F(GenerateCommand, MakesMissingParentsAndLeavesNothingButDatabases) {
  EXPECT_EQ(RunHost({"generate", "--data-dir", data_ + "/a/b", "--scale", "0.01"}).exit_code, 0);
  for (const fs::directory_entry& entry : fs::directory_iterator(data_ + "/a/b")) {
    EXPECT_EQ(entry.path().extension(), ".db") << entry.path();
  }
}

TEST_F(GenerateCommand, RefusesAJournalThatIsLeftOver) {
  fs::create_directory(data_);
  std::ofstream(fs::path(data_) / "Cache.db-wal") << "left by a crash";
  const HostRun run = Generate();
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr("Cache.db-wal"));
  EXPECT_EQ(std::distance(fs::directory_iterator(data_), {}), 1);
}

TEST_F(GenerateCommand, NeverReplacesADirectoryUnderADatabasesName) {
  fs::create_directories(fs::path(data_) / "HealthLog.db" / "kept");
  const HostRun run = Generate({"--scale", "0.01", "--force"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr("HealthLog.db is a link, a directory or something else that is no ordinary file"));
  EXPECT_TRUE(fs::exists(fs::path(data_) / "HealthLog.db" / "kept"));
  EXPECT_EQ(std::distance(fs::directory_iterator(data_), {}), 1);
}

TEST_F(GenerateCommand, DescribesWhatItWroteAsJson) {
  const HostRun run = Generate({"--scale", "0.01", "--seed", "18446744073709551615", "--json"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  const nlohmann::json document = run.Json();
  EXPECT_EQ(document["directory"], data_);
  EXPECT_EQ(document["seed"], 18'446'744'073'709'551'615U);
  EXPECT_EQ(document["now"], "2024-05-01T00:00:00+00:00");
  std::size_t tables = 0;
  std::int64_t rows = 0;
  for (const auto& database : document["databases"]) {
    const fs::path file(database["path"].get<std::string>());
    EXPECT_EQ(file, fs::path(data_) / (database["name"].get<std::string>() + ".db"));
    EXPECT_EQ(database["bytes"], fs::file_size(file));
    tables += database["tables"].get<std::size_t>();
    rows += database["rows"].get<std::int64_t>();
  }
  EXPECT_EQ(rows, static_cast<std::int64_t>(Content().size()));
  EXPECT_EQ(tables + document["left_out"].size(), catalogue_.contracts.size());
}

TEST_F(GenerateCommand, RefusesANowThatIsNoDay) { EXPECT_EQ(Generate({"--now", "yesterday"}).exit_code, 2); }

TEST_F(GenerateCommand, GivesEveryTableTheColumnsOfItsContract) {
  Generate();
  for (const ContractView& contract : catalogue_.contracts) {
    if (Exists(contract)) {
      const auto columns =
          Database(File(contract)).Query("SELECT name FROM pragma_table_info('" + contract.table + "')");
      ASSERT_EQ(static_cast<int>(columns.size()), contract.descriptor->field_count()) << contract.table;
      EXPECT_EQ(columns[0][0], "time");
    }
  }
}

TEST_F(GenerateCommand, PutsRowsOnBothSidesOfEveryRetentionOldestFirst) {
  Generate();
  for (const ContractView& contract : catalogue_.contracts) {
    if (Exists(contract) && contract.retention_days != 0) {
      Database database(File(contract));
      const std::string cutoff = "datetime('2024-05-01', '-" + std::to_string(contract.retention_days) + " days')";
      EXPECT_GT(database.Count(contract.table + " WHERE datetime(time) < " + cutoff), 0) << contract.table;
      EXPECT_GT(database.Count(contract.table + " WHERE datetime(time) >= " + cutoff), 0) << contract.table;
      EXPECT_EQ(database.Query("SELECT rowid FROM " + contract.table + " ORDER BY time, rowid"),
                database.Query("SELECT rowid FROM " + contract.table + " ORDER BY rowid"));
    }
  }
}

TEST_F(GenerateCommand, SpreadsRowsOverTheDaysAskedFor) {
  Generate({"--scale", "0.01", "--days", "2"});
  for (const Row& row : Content()) {
    EXPECT_GE(row[0], "2024-04-29T00:00:00+00:00");
    EXPECT_LT(row[0], "2024-05-01T00:00:00+00:00");
  }
}

TEST_F(GenerateCommand, LeavesOutOneDatabaseAndOneTable) {
  Generate();
  const std::vector<ContractView> missing = MissingContracts();
  ASSERT_EQ(missing.size(), 2U);
  EXPECT_NE(fs::exists(File(missing[0])), fs::exists(File(missing[1])));
}

TEST_F(GenerateCommand, MakesOneDatabaseTooLargeAndSomeTablesTooLong) {
  EXPECT_EQ(Generate({}).exit_code, 0);
  std::set<std::string> too_large;
  int too_long = 0;
  for (const ContractView& contract : catalogue_.contracts) {
    if (Exists(contract)) {
      if (contract.max_size_mb != 0 && fs::file_size(File(contract)) > contract.max_size_mb * 1'000'000ULL) {
        too_large.insert(contract.database);
      }
      too_long += contract.max_rows != 0 && Database(File(contract)).Count(contract.table) > contract.max_rows ? 1 : 0;
    }
  }
  EXPECT_EQ(too_large.size(), 1U);
  EXPECT_GE(too_long, 3);
}

}  // namespace
}  // namespace corvo::test
