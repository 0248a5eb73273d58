#include <gmock/gmock.h>

#include <fstream>

#include "host/plan_fixture.h"
#include "storage/telemetry_storage.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/option_scope.h"
#include "support/test_catalogue.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::DatabaseReport;
using telemetry::host::DirectoryRun;
using telemetry::host::Problem;
using telemetry::host::RunReport;
using testing::HasSubstr;
using testing::SizeIs;

/// A database of one table of 100 rows, of which a pass leaves 18, and a second one like it.
class Plan : public PlanTest {
 protected:
  Plan() {
    for (const char* name : {"First", "Second"}) {
      catalogue_.databases.push_back(contracts_.Make(std::string(name) + "File", {.database = name}));
      catalogue_.contracts.push_back(
          contracts_.Make(std::string(name) + "Rows", {.database = name, .max_rows = 20, .max_size_mb = 1}));
      Database database(File(name));
      database.Run("CREATE TABLE " + std::string(name) + "Rows (time TEXT, value)");
      AddRows(database, std::string(name) + "Rows", 100);
    }
  }

  static void AddRows(Database& database, const std::string& table, int count) {
    database.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
                 ") INSERT INTO " + table + " SELECT '2024-05-01T00:00:00+00:00', hex(zeroblob(300)) FROM n");
  }

  [[nodiscard]] fs::path File(const std::string& name) const { return folder_.Path() / (name + ".db"); }

  /// Puts the file of the database, with its side files, in its place as a program leaves it that is killed after
  /// `sql`.
  void KillAfter(const std::string& name, const std::string& sql) {
    const TempDir workshop;
    const fs::path made = workshop.Path() / "made.db";
    fs::rename(File(name), made);
    Database writer(made);
    writer.Run(sql);
    for (const char* suffix : {"", "-journal", "-wal"}) {
      if (fs::exists(made.string() + suffix)) {
        fs::copy_file(made.string() + suffix, File(name).string() + suffix);
      }
    }
  }

  TestCatalogue catalogue_;
  ContractFactory contracts_;
  TempDir folder_;
  const DirectoryRun run_{.directory = folder_.Path(), .source = "--data-dir", .only = {}};
};

TEST_F(Plan, TellsWhatTheRunDoes) {
  const RunReport plan = PlanUntouching(run_);
  ASSERT_THAT(plan.databases, SizeIs(2));
  EXPECT_TRUE(plan.planned);
  EXPECT_FALSE(plan.databases[0].problem);
  EXPECT_EQ(plan.databases[0].tables[0].deleted.row_limit, 82);
  EXPECT_EQ(plan.databases[0].tables[0].oldest_left, 1'714'521'600);
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

TEST_F(Plan, LeavesNoOptionsBehindForTheRunAfterIt) {
  auto* last = contracts_.Make("LastRows", {.database = "First", .max_rows = 50, .max_size_mb = 1});
  catalogue_.contracts.push_back(last);
  catalogue_.databases.front() = contracts_.Make("FirstFile", {.database = "First", .max_size_mb = 1});
  EXPECT_EQ(PlanUntouching(run_).databases[0].tables[0].deleted.row_limit, 82);
  EXPECT_EQ(Run(run_).databases[0].tables[0].deleted.row_limit, 82);
}

TEST_F(Plan, OfAnInterruptedUserCopiesNothing) {
  shared::InterruptStatements();
  const RunReport plan = PlanUntouching(run_);
  shared::AllowStatements();
  ASSERT_THAT(plan.databases, SizeIs(2));
  for (const DatabaseReport& database : plan.databases) {
    ASSERT_TRUE(database.problem);
    EXPECT_EQ(database.problem->kind, Problem::Kind::kInterrupted);
    EXPECT_EQ(database.bytes_after, database.bytes_before);
  }
}

TEST_F(Plan, OfDamagedDatabasesTellsWhatTheRunTells) {
  std::ofstream(File("First"), std::ios::trunc) << "no database, but long enough for one";
  std::fstream(File("Second"), std::ios::in | std::ios::out | std::ios::binary).seekp(8192) << std::string(900, 'x');
  const RunReport plan = PlanUntouching(run_);
  ASSERT_TRUE(plan.databases[0].problem);
  EXPECT_THAT(plan.databases[0].problem->reason, HasSubstr("damaged: file is not a database"));
  ASSERT_TRUE(plan.databases[1].problem);
  EXPECT_THAT(plan.databases[1].problem->reason, HasSubstr("damaged: "));
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

TEST_F(Plan, UndoesWhatAKilledProgramBeganInTheCopyAlone) {
  KillAfter("First",
            "PRAGMA cache_size=3; BEGIN; DELETE FROM FirstRows; CREATE TABLE Unfinished AS SELECT hex("
            "zeroblob(20000)) AS x FROM (SELECT 1 UNION SELECT 2)");
  ASSERT_TRUE(fs::exists(File("First").string() + "-journal"));
  const RunReport plan = PlanUntouching(run_);
  EXPECT_EQ(plan.databases[0].tables[0].rows_before, 100);
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

TEST_F(Plan, ReadsTheLogOfAKilledProgramWithoutItsIndex) {
  KillAfter("First", "PRAGMA journal_mode=WAL; INSERT INTO FirstRows SELECT * FROM FirstRows");
  ASSERT_TRUE(fs::exists(File("First").string() + "-wal"));
  const RunReport plan = PlanUntouching(run_);
  EXPECT_EQ(plan.databases[0].tables[0].rows_before, 200);
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

TEST_F(Plan, IsOfOneMomentWhileACollectorHasUnfinishedRows) {
  Database collector(File("First"));
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO FirstRows VALUES ('2024-05-01', 1); BEGIN");
  AddRows(collector, "FirstRows", 1000);
  const OptionScope impatient(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(0));
  shared::SetDataDirectory(run_.directory.string());
  const RunReport plan = telemetry::host::Plan(module_, run_);
  EXPECT_FALSE(plan.databases[0].problem);
  EXPECT_EQ(plan.databases[0].tables[0].rows_before, 101);
  collector.Run("COMMIT");
  EXPECT_EQ(collector.Count("FirstRows"), 1101);
}

TEST_F(Plan, OfALockedDatabaseSaysSo) {
  Database holder(File("Second"));
  holder.Run("BEGIN EXCLUSIVE");
  const OptionScope impatient(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(0));
  shared::SetDataDirectory(run_.directory.string());
  const RunReport plan = telemetry::host::Plan(module_, run_);
  EXPECT_FALSE(plan.databases[0].problem);
  ASSERT_TRUE(plan.databases[1].problem);
  EXPECT_EQ(plan.databases[1].problem->kind, Problem::Kind::kBusy);
}

TEST_F(Plan, OfAFileThatIsLongerThanItsPagesMeasuresTheFile) {
  catalogue_.databases.front() = contracts_.Make("FirstFile", {.database = "First", .max_size_mb = 1});
  fs::resize_file(File("First"), 1'500'000);
  const RunReport plan = PlanUntouching(run_);
  EXPECT_GT(plan.databases[0].tables[0].deleted.size_limit, 0);
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

}  // namespace
}  // namespace corvo::test
