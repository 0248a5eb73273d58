// Runs over a part of the databases, each in a pass of its own, and beside other runs.
#include <gmock/gmock.h>

#include <fstream>
#include <map>

#include "host/facts/catalogue_view.h"
#include "host/platform/instance_lock.h"
#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class NarrowedRun : public RunTest {
 protected:
  /// Every row of every database, by file and table.
  [[nodiscard]] std::map<std::string, std::vector<Row>> AllRows() const {
    std::map<std::string, std::vector<Row>> rows;
    for (const auto& contract : telemetry::host::ReadCatalogue().contracts) {
      const std::filesystem::path file = File(contract.database + ".db");
      if (std::filesystem::exists(file) &&
          Database(file).Number("SELECT COUNT(*) FROM sqlite_schema WHERE name = '" + contract.table + "'") != 0) {
        rows[contract.database + "." + contract.table] = Database(file).Query("SELECT * FROM " + contract.table);
      }
    }
    return rows;
  }

  void GenerateAnew(const std::string& seed) {
    const HostRun run =
        RunHost({"generate", "--data-dir", data_, "--scale", "0.3", "--seed", seed, "--now", "2026-05-01", "--force"});
    ASSERT_EQ(run.exit_code, 0) << run.err;
  }

  [[nodiscard]] std::vector<std::string> Cleaned(const HostRun& run) const {
    std::vector<std::string> names;
    const nlohmann::json document = run.Json();
    for (const auto& database : document["databases"]) {
      if (database["cleaned"] == true) {
        names.push_back(database["name"]);
      }
    }
    return names;
  }

  void Damage(const std::string& name) const {
    std::ofstream(File(name + ".db"), std::ios::trunc) << "this is no database, but it is long enough to look at";
  }
};

TEST_F(NarrowedRun, OneByOneLeavesTheSameRowsAsTogether) {
  for (const char* seed : {"1", "2", "3"}) {
    GenerateAnew(seed);
    ASSERT_EQ(Run().exit_code, 0);
    const auto together = AllRows();
    GenerateAnew(seed);
    ASSERT_EQ(Run({"--keep-going"}).exit_code, 0);
    EXPECT_TRUE(AllRows() == together) << "seed " << seed;
  }
}

TEST_F(NarrowedRun, OneByOneIsAPassForEachDatabase) {
  Generate();
  const nlohmann::json document = Run({"--keep-going", "--json"}).Json();
  std::vector<std::string> databases;
  for (const auto& pass : document["passes"]) {
    databases.push_back(pass["database"]);
  }
  EXPECT_THAT(databases,
              ElementsAre("Cache", "DeviceProfile", "DeviceProfileEvents", "HealthLog", "PerformanceSamples"));
}

/// A trigger that fails the first deletion: nothing that a look could find.
class FailingDatabase : public NarrowedRun {
 protected:
  void SetUp() override {
    Generate();
    Database(File("DeviceProfile.db"))
        .Run("CREATE TRIGGER Refuse BEFORE DELETE ON Device BEGIN SELECT RAISE(ABORT, 'not this one'); END");
  }
};

TEST_F(FailingDatabase, EndsAPassOverAllAndIsToldFromThoseThatItKeptFromTheirTurn) {
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(Cleaned(run), ElementsAre("Cache"));
  const nlohmann::json document = run.Json();
  EXPECT_EQ(document["databases"][1]["problem"]["kind"], "failed");
  EXPECT_THAT(document["databases"][1]["problem"]["reason"].get<std::string>(), HasSubstr("DELETE FROM Device WHERE"));
  EXPECT_EQ(document["databases"][2]["problem"]["kind"], "not_reached");
  EXPECT_EQ(document["passes"][0]["failed_database"], File("DeviceProfile.db").string());
}

TEST_F(FailingDatabase, IsPassedOverWhenTheRunKeepsGoing) {
  const HostRun run = Run({"--json", "--keep-going"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(Cleaned(run), ElementsAre("Cache", "DeviceProfileEvents", "HealthLog", "PerformanceSamples"));
}

TEST_F(NarrowedRun, CleansTheNamedDatabasesAlone) {
  Generate();
  const auto before = std::filesystem::last_write_time(File("Cache.db"));
  const HostRun run = Run({"--json", "--database", "HealthLog", "--database", "devicePROFILE.db"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(Cleaned(run), ElementsAre("DeviceProfile", "HealthLog"));
  EXPECT_EQ(run.Json()["databases"].size(), 2U);
  EXPECT_EQ(std::filesystem::last_write_time(File("Cache.db")), before);
}

TEST_F(NarrowedRun, LeavesADatabaseAloneWhoseTableTheRulesWouldMisread) {
  Generate();
  Database(File("HealthLog.db")).Run("ALTER TABLE BatteryStatus RENAME COLUMN time TO stamp");
  const auto before = std::filesystem::last_write_time(File("HealthLog.db"));
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("not cleaned: HealthLog (BatteryStatus has no column time)"));
  EXPECT_EQ(std::filesystem::last_write_time(File("HealthLog.db")), before);
}

TEST_F(NarrowedRun, WaitsOnceForALockAndTellsWhoseTurnItWas) {
  Generate();
  Database other(File("HealthLog.db"));
  other.Run("BEGIN EXCLUSIVE");
  const auto start = std::chrono::steady_clock::now();
  const HostRun run = Run({"--busy-timeout", "1"});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 4 of 5 databases; not cleaned: HealthLog (another program holds it locked)"));
}

TEST_F(NarrowedRun, IsRefusedWhileAnotherRunHoldsTheDirectory) {
  Generate();
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  ASSERT_TRUE(lock.has_value());
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 11);
  EXPECT_EQ(run.Json()["result"]["code"], 11);
  EXPECT_THAT(run.err, HasSubstr("another run cleans " + data_ + ": process "));
  const HostRun waiting = Run({"--wait", "1"});
  EXPECT_EQ(waiting.exit_code, 11);
  EXPECT_THAT(waiting.err, HasSubstr("it did not end within 1 second"));
}

/// A file that a pass takes for the database of a contract where that one cannot be opened.
class FileNamedAfterAContract : public NarrowedRun {
 protected:
  void SetUp() override {
    Generate();
    Database(File("Device.db")).Run("CREATE TABLE Device (time TEXT); INSERT INTO Device VALUES ('2001-01-01')");
  }
  ~FileNamedAfterAContract() override { EXPECT_EQ(Database(File("Device.db")).Count("Device"), 1); }
};

TEST_F(FileNamedAfterAContract, IsLeftAloneWhereItsDatabaseIsNamedByNobody) {
  const HostRun run = Run({"--json", "--database", "HealthLog"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(Cleaned(run), ElementsAre("HealthLog"));
}

TEST_F(FileNamedAfterAContract, IsLeftAloneWhenEachDatabaseHasItsOwnPass) {
  const HostRun run = Run({"--json", "--keep-going"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(Cleaned(run), SizeIs(5));
}

TEST_F(FileNamedAfterAContract, IsLeftAloneWhereItsDatabaseIsMissing) {
  std::filesystem::remove(File("DeviceProfile.db"));
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(Cleaned(run), SizeIs(4));
}

TEST_F(FileNamedAfterAContract, KeepsNoOtherDatabaseFromItsTurnWhereItsOwnIsDamaged) {
  Damage("DeviceProfile");
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(Cleaned(run), SizeIs(4));
}

// Its log may still hold rows, and opening it would remove that. What the run before has recorded stays for `verify`.
TEST_F(NarrowedRun, TakesAnEmptyFileForNone) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  for (const char* content : {"", "S"}) {
    std::ofstream(File("HealthLog.db"), std::ios::trunc) << content;
    std::ofstream(File("HealthLog.db-wal")) << "rows";
    const HostRun run = Run({"--json"});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_THAT(Cleaned(run), ElementsAre("Cache", "DeviceProfile", "DeviceProfileEvents", "PerformanceSamples"));
    EXPECT_EQ(std::filesystem::file_size(File("HealthLog.db")), std::string(content).size());
    EXPECT_EQ(std::filesystem::file_size(File("HealthLog.db-wal")), 4U);
  }
  std::filesystem::remove(File("HealthLog.db-wal"));
  EXPECT_EQ(RunHost({"verify", "--data-dir", data_}).exit_code, 3);
}

TEST_F(NarrowedRun, LeavesNothingOfItsOwnInTheDirectoryButTheHistory) {
  Generate();
  std::vector<std::string> before = {".corvo-telemetry-host.history"};
  std::vector<std::string> after;
  for (const auto& entry : std::filesystem::directory_iterator(data_)) {
    before.push_back(entry.path().filename().string());
  }
  EXPECT_EQ(Run().exit_code, 0);
  for (const auto& entry : std::filesystem::directory_iterator(data_)) {
    after.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(after, testing::UnorderedElementsAreArray(before));
}

TEST_F(NarrowedRun, SaysNothingWhenItIsToBeQuietAndAllIsWell) {
  Generate();
  const HostRun run = Run({"--quiet"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.out + run.err, IsEmpty());
}

TEST_F(NarrowedRun, TellsAFailureEvenWhenItIsToBeQuiet) {
  Generate();
  Damage("Cache");
  const HostRun run = Run({"--quiet"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("not cleaned: Cache (damaged: file is not a database)"));
}

}  // namespace
}  // namespace corvo::test
