#include <gmock/gmock.h>
#include <sys/stat.h>

#include "host/plan_fixture.h"
#include "host/show/failure.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/test_catalogue.h"
#include "support/unprivileged_posix.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::CommandFailure;
using telemetry::host::DirectoryRun;
using telemetry::host::Problem;
using telemetry::host::RunReport;
using testing::HasSubstr;

/// A database of one table of 100 rows with a limit of 20.
class PlanOfOne : public PlanTest {
 protected:
  PlanOfOne() {
    catalogue_.databases.push_back(contracts_.Make("File", {.database = "Only"}));
    catalogue_.contracts.push_back(contracts_.Make("Rows", {.database = "Only", .max_rows = 20}));
    Database(file_).Run(
        "CREATE TABLE Rows (time TEXT, value); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
        "i < 100) INSERT INTO Rows SELECT '2024-05-01T00:00:00+00:00', hex(zeroblob(300)) FROM n");
  }

  TestCatalogue catalogue_;
  ContractFactory contracts_;
  TempDir folder_;
  const fs::path file_ = folder_.Path() / "Only.db";
  const DirectoryRun run_{.directory = folder_.Path(), .source = "--data-dir", .only = {}};
};

// The file claims bytes that it does not have.
TEST_F(PlanOfOne, IsRefusedWithoutRoomForTheCopies) {
  const fs::path log = file_.string() + "-wal";
  Database(log).Run("CREATE TABLE t (x)");
  fs::resize_file(log, fs::space(folder_.Path()).available + 1'000'000'000);
  try {
    static_cast<void>(telemetry::host::Plan(module_, run_));
    FAIL();
  } catch (const CommandFailure& failure) {
    EXPECT_EQ(failure.Code(), telemetry::host::kPassFailed);
    EXPECT_THAT(failure.Record().what, HasSubstr("no room to plan"));
  }
  EXPECT_TRUE(place_.IsEmpty());
}

TEST_F(PlanOfOne, TellsWhatMayNotBeReadOrWritten) {
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(place_.Path().c_str(), 0777), 0);
  for (const mode_t mode : {0U, 0444U}) {
    ASSERT_EQ(chmod(file_.c_str(), mode), 0);
    const Unprivileged unprivileged;
    const RunReport plan = telemetry::host::Plan(module_, run_);
    ASSERT_TRUE(plan.databases.at(0).problem);
    EXPECT_EQ(plan.databases[0].problem->kind, Problem::Kind::kCannotOpen);
    EXPECT_THAT(plan.databases[0].problem->reason, HasSubstr("permission denied"));
  }
}

// The journal is where the file is, not where its name is.
TEST_F(PlanOfOne, UndoesWhatAKilledProgramBeganBehindALink) {
  const TempDir elsewhere;
  const TempDir workshop;
  const std::string made = workshop / "made.db";
  fs::rename(file_, made);
  Database writer(made);
  writer.Run("PRAGMA cache_size=3; BEGIN; DELETE FROM Rows; CREATE TABLE t AS SELECT hex(zeroblob(20000)) AS x");
  fs::copy_file(made, elsewhere / "real.db");
  fs::copy_file(made + "-journal", elsewhere / "real.db-journal");
  fs::create_symlink(elsewhere / "real.db", file_);
  const RunReport plan = PlanUntouching(run_);
  EXPECT_EQ(plan.databases.at(0).tables.at(0).rows_before, 100);
  EXPECT_EQ(Facts(plan), Facts(Run(run_)));
}

// Read through the rights of its group, it is copied as a file of this user, whose own rights count then.
TEST_F(PlanOfOne, OfAnInterruptedTransactionCanWriteItsCopyWhateverTheRightsOfTheFile) {
  const TempDir workshop;
  const std::string made = workshop / "made.db";
  fs::rename(file_, made);
  Database writer(made);
  writer.Run("PRAGMA cache_size=3; BEGIN; DELETE FROM Rows; CREATE TABLE t AS SELECT hex(zeroblob(20000)) AS x");
  for (const char* suffix : {"", "-journal"}) {
    const std::string copy = file_.string() + suffix;
    fs::copy_file(made + suffix, copy);
    ASSERT_EQ(chmod(copy.c_str(), 0066), 0);
  }
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  ASSERT_EQ(chmod(place_.Path().c_str(), 0777), 0);
  const Unprivileged unprivileged;
  const RunReport plan = telemetry::host::Plan(module_, run_);
  EXPECT_FALSE(plan.databases.at(0).problem) << plan.databases[0].problem->reason;
}

}  // namespace
}  // namespace corvo::test
