#include <gmock/gmock.h>

#include <fstream>

#include "host/run_fixture.h"
#include "support/database.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class RunFailure : public RunTest {
 protected:
  /// Expects a run that could not begin, told the same on standard error and in the JSON document.
  void ExpectNoBeginning(int exit_code, const std::string& text, const std::vector<std::string>& more = {}) {
    const HostRun run = Run(more);
    EXPECT_EQ(run.exit_code, exit_code);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(text));

    std::vector<std::string> words = more;
    words.emplace_back("--json");
    const HostRun json = Run(words);
    EXPECT_EQ(json.exit_code, exit_code);
    EXPECT_EQ(json.Json()["result"]["code"], exit_code);
    EXPECT_THAT(json.Json()["result"]["what"].get<std::string>(), HasSubstr(text));
    EXPECT_EQ(json.Json()["databases"], nlohmann::json::array());
  }

  std::string TextFile(const std::string& name) {
    std::ofstream(folder_ / name) << "no library\n";
    return folder_ / name;
  }
};

TEST_F(RunFailure, OfAMissingDataDirectoryHasAnExitCodeOfItsOwn) { ExpectNoBeginning(10, "does not exist"); }

TEST_F(RunFailure, OfADataDirectoryThatIsAFileIsTheSame) {
  data_ = TextFile("data");
  ExpectNoBeginning(10, "is not a directory");
}

TEST_F(RunFailure, OfADirectoryNameThatIsNotUtf8IsStillAJsonDocument) {
  data_ = folder_ / "no \xff text";
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 10);
  EXPECT_THAT(run.Json()["result"]["what"].get<std::string>(), HasSubstr("no \xEF\xBF\xBD text"));
}

TEST_F(RunFailure, OfAMissingModuleNamesTheOption) {
  Generate();
  ExpectNoBeginning(12, "--plugin", {"--plugin", folder_ / "missing.so"});
}

TEST_F(RunFailure, OfAModuleThatIsNoLibraryNamesTheFile) {
  Generate();
  ExpectNoBeginning(12, "module.so", {"--plugin", TextFile("module.so")});
}

TEST_F(RunFailure, OfALibraryThatIsNoModuleNamesTheMissingFunction) {
  Generate();
  ExpectNoBeginning(12, "exports no LoadPlugin", {"--plugin", CORVO_LIBRARY_WITHOUT_MODULE});
}

TEST_F(RunFailure, OfALogFileThatCannotBeWrittenIsWrongUsage) {
  Generate();
  ExpectNoBeginning(2, "--log-file", {"--log-file", folder_ / "missing/run.log"});
  ExpectNoBeginning(2, "--log-file", {"--log-file", folder_.Path().string()});
}

TEST_F(RunFailure, OfADamagedDatabaseIsTheModulesRecord) {
  Generate();
  std::ofstream(File("HealthLog.db"), std::ios::trunc) << "this is no database, but it is long enough to look at";
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.Json()["result"]["type"], "sqlite3");
  EXPECT_EQ(run.Json()["result"]["code"], 26);
  EXPECT_EQ(run.Json()["cleaned"], 4);
}

TEST_F(RunFailure, OfADamagedDatabaseShowsUnknownCountsAndAdvice) {
  Generate();
  std::ofstream(File("HealthLog.db"), std::ios::trunc) << "this is no database, but it is long enough to look at";
  const HostRun run = Run();
  EXPECT_THAT(run.out, ContainsPattern("  BatteryStatus +\\? +\\?\n"));
  EXPECT_THAT(run.out, HasSubstr("Cleaned 4 of 5 databases; not cleaned: HealthLog (damaged: file is not a database)"));
  EXPECT_THAT(run.out, HasSubstr("move it away"));
}

TEST_F(RunFailure, SendsNoControlCharacterOfTheFileToATerminal) {
  Generate();
  Database(File("Cache.db"))
      .Run("PRAGMA writable_schema = ON; UPDATE sqlite_schema SET name = char(27) || '[2J', sql = 'CREATE nothing'");
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("not cleaned: Cache (damaged: malformed database schema (\\x1b[2J)"));
  EXPECT_THAT(run.out + run.err, testing::Not(HasSubstr("\x1b")));
}

TEST_F(RunFailure, OfOneDatabaseLeavesTheOthersClean) {
  Generate();
  std::ofstream(File("Cache.db"), std::ios::trunc) << "this is no database, but it is long enough to look at";
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  const nlohmann::json document = run.Json();
  for (const auto& database : document["databases"]) {
    EXPECT_EQ(database["cleaned"], database["name"] != "Cache") << database["name"];
  }
}

// The size limit goes on after a table that it cannot trim, and the pass is a success.
TEST_F(RunFailure, OfAStatementThatDoesNotEndThePassLeavesTheDatabaseUncleaned) {
  std::filesystem::create_directory(data_);
  Database(File("DeviceProfileEvents.db"))
      .Run(
          "CREATE TABLE Filler (x); INSERT INTO Filler VALUES (zeroblob(21000000));"
          "CREATE TABLE DeviceEvents (time TEXT); INSERT INTO DeviceEvents VALUES (datetime('now'));"
          "CREATE TABLE HardwareEvents (time TEXT); INSERT INTO HardwareEvents VALUES (datetime('now'));"
          "CREATE TRIGGER Refuse BEFORE DELETE ON DeviceEvents BEGIN SELECT RAISE(ABORT, 'not this one'); END");
  const HostRun run = Run({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  const nlohmann::json document = run.Json();
  EXPECT_EQ(document["passes"][0]["result"]["code"], 0);
  EXPECT_EQ(document["databases"][0]["cleaned"], false);
  EXPECT_EQ(document["databases"][0]["problem"]["kind"], "failed");
  EXPECT_THAT(document["databases"][0]["problem"]["reason"].get<std::string>(),
              HasSubstr("not this one in: DELETE FROM DeviceEvents WHERE rowid IN"));
}

class MissingLocale : public RunFailure {
 protected:
  /// A run that finds no locale definitions.
  HostRun RunWithoutLocales(const std::vector<std::string>& more = {}) {
    std::filesystem::create_directory(folder_ / "locales");
    // The C library itself leaks what it made of LOCPATH when a locale is not found.
    return Run(more, {"LOCPATH=" + folder_ / "locales", "ASAN_OPTIONS=detect_leaks=0"});
  }

  /// Creates a database with one table, whose rows are older than any retention.
  void CreateExpiredRows(const std::string& database, const std::string& table, int count) const {
    Database file(File(database + ".db"));
    file.Run("CREATE TABLE " + table + " (time TEXT)");
    file.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
             ") INSERT INTO " + table + " SELECT '2000-01-01T00:00:00+00:00' FROM n");
  }
};

TEST_F(MissingLocale, IsAnnouncedWithTheCommandThatInstallsIt) {
  Generate();
  EXPECT_THAT(RunWithoutLocales({"--log-level", "none"}).err,
              HasSubstr("localedef -i en_US -f ISO-8859-1 en_US (package locales)\n"));
}

TEST_F(MissingLocale, FailsThePassWithTheRecordOfTheLocale) {
  Generate();
  const HostRun run = RunWithoutLocales({"--json"});
  EXPECT_EQ(run.exit_code, 1);
  const nlohmann::json document = run.Json();
  EXPECT_EQ(document["result"]["category"], "EC_Std");
  EXPECT_THAT(document["result"]["what"].get<std::string>(), HasSubstr("locale"));
}

TEST_F(MissingLocale, FailsAPassAndEndsTheRunWithIt) {
  Generate();
  const HostRun run = RunWithoutLocales({"--passes", "3"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 0 of 5 databases; not cleaned: "));
  EXPECT_THAT(run.out, testing::Not(HasSubstr("Pass 2")));
}

TEST_F(MissingLocale, ExpiresNoRowAndKeepsTheRowLimitOfTheFirstTableAlone) {
  std::filesystem::create_directory(data_);
  CreateExpiredRows("Cache", "CollectorCache", 20'000);
  CreateExpiredRows("HealthLog", "BatteryHealthLog", 10'000);
  EXPECT_EQ(RunWithoutLocales({"--json"}).exit_code, 1);
  EXPECT_EQ(Database(File("Cache.db")).Count("CollectorCache"), 18'000);
  EXPECT_EQ(Database(File("HealthLog.db")).Count("BatteryHealthLog"), 10'000) << "the pass ended before";
}

}  // namespace
}  // namespace corvo::test
