// Compaction, and the guard before it.
#include <sqlite3.h>

#include <fstream>
#include <iterator>

#include "storage/storage_fixture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using testing::StartsWith;

std::string Content(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr int kPageSize = 512;

class Compaction : public StorageTest {
 protected:
  /// 60 rows in three leaf pages, with a cell of the last one that now begins inside the list of cells. Every row can
  /// still be read; compaction reports success and leaves a table whose reading breaks off in the middle.
  void CreateDamagedSamples() {
    {
      Database database(file_);
      database.Run("PRAGMA page_size=" + std::to_string(kPageSize));
      database.Run("CREATE TABLE Samples(time TEXT, v TEXT)");
      database.Run(
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60) "
          "INSERT INTO Samples SELECT printf('2024-01-%02d', i), printf('row%03d', i) FROM n");
    }
    constexpr int kLeafHeader = 8;
    constexpr int kDamagedCell = 5;
    std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(-kPageSize + kLeafHeader + 2 * kDamagedCell, std::ios::end);
    stream.put('\0');
  }

  /// One row of this value in a column with a constraint that was not there when the row was inserted.
  void CreateRowUnder(const std::string& constraint, const std::string& value) {
    Database database(file_);
    database.Run("CREATE TABLE Samples(v); INSERT INTO Samples VALUES(" + value + ")");
    database.Run("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = 'CREATE TABLE Samples(v " + constraint +
                 ")'");
  }
};

TEST_F(Compaction, GivesFreePagesBack) {
  CreateSamples(1000);
  const auto size = std::filesystem::file_size(file_);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id > 1"), Succeeded());

  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_LT(std::filesystem::file_size(file_), size);
  EXPECT_EQ(Read(storage, "SELECT * FROM Samples"), (std::vector<Row>{{"1", "value 1"}}));
}

TEST_F(Compaction, OfADamagedFileLosesReadableRowsWithoutTheGuard) {
  CreateDamagedSamples();
  const OptionScope unguarded(&shared::StorageOptions::check_soundness, false);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_EQ(Read(storage, "SELECT v FROM Samples").size(), 60U);

  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_THAT(RunSql(storage, "SELECT v FROM Samples"), FailsWith(SQLITE_CORRUPT, "database disk image is malformed"));
}

class GuardedCompaction : public Compaction, public testing::WithParamInterface<const char*> {};

TEST_P(GuardedCompaction, OfADamagedFileFailsAndLeavesItByteForByte) {
  CreateDamagedSamples();
  const std::string before = Content(file_);
  {
    TelemetryStorage storage(file_.c_str(), "");

    EXPECT_THAT(RunSql(storage, GetParam()),
                FailsWith(SQLITE_CORRUPT, StartsWith("database disk image is malformed: ")));

    EXPECT_EQ(Read(storage, "SELECT v FROM Samples").size(), 60U);
  }
  EXPECT_EQ(Content(file_), before);
}

INSTANTIATE_TEST_SUITE_P(Compaction, GuardedCompaction,
                         testing::Values("VACUUM;", "vacuum", " \n\tVacuum main;", "-- tidy\nVACUUM",
                                         "/* tidy */VACUUM", ";;VACUUM", "\xEF\xBB\xBFVACUUM", "VACUUM/**/;"));

TEST_F(Compaction, OfADamagedFileWithAWriteAheadLogFailsToo) {
  CreateDamagedSamples();
  Database(file_).Run("PRAGMA journal_mode=WAL");
  TelemetryStorage storage(file_.c_str(), "");

  for (const char* statement : {"VACUUM;", "DELETE FROM Samples WHERE time = '2024-01-01'"}) {
    EXPECT_THAT(RunSql(storage, statement),
                FailsWith(SQLITE_CORRUPT, StartsWith("database disk image is malformed: ")));
  }

  EXPECT_EQ(Read(storage, "SELECT v FROM Samples").size(), 60U);
}

TEST_F(Compaction, GuardChecksNothingElse) {
  CreateDamagedSamples();
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "/* VACUUM */ SELECT v AS 'VACUUM' FROM Samples"), Succeeded());
}

TEST_F(Compaction, KeepsARowThatBreaksACheckConstraint) {
  CreateRowUnder("CHECK(v > 0)", "-1");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_EQ(Read(storage, "SELECT v FROM Samples"), (std::vector<Row>{{"-1"}}));
}

TEST_F(Compaction, LeavesCheckConstraintsInForceForLaterStatements) {
  CreateRowUnder("CHECK(v > 0)", "-1");
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_THAT(RunSql(storage, "INSERT INTO Samples VALUES(-2)"),
              FailsWith(SQLITE_CONSTRAINT_CHECK, StartsWith("CHECK constraint failed")));

  EXPECT_EQ(Read(storage, "SELECT v FROM Samples"), (std::vector<Row>{{"-1"}}));
}

TEST_F(Compaction, RefusedByTheGuardLeavesCheckConstraintsInForceToo) {
  CreateDamagedSamples();
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "VACUUM;"), FailsWith(SQLITE_CORRUPT, testing::_));

  EXPECT_EQ(ReadValue(storage, "PRAGMA ignore_check_constraints"), "0");
}

TEST_F(Compaction, KeepsANullInANotNullColumn) {
  CreateRowUnder("NOT NULL", "NULL");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_EQ(Read(storage, "SELECT v FROM Samples"), (std::vector<Row>{{""}}));
}

class UnknownFunction : public Compaction, public testing::WithParamInterface<bool> {};

// SQLite itself cannot create the table anew: the guard neither causes nor hides it.
TEST_P(UnknownFunction, InACheckConstraintFailsCompactionAndLeavesTheFileByteForByte) {
  const OptionScope guard(&shared::StorageOptions::check_soundness, GetParam());
  CreateRowUnder("CHECK(sha3(v) <> 0)", "1");
  const std::string before = Content(file_);
  {
    TelemetryStorage storage(file_.c_str(), "");

    EXPECT_THAT(RunSql(storage, "VACUUM;"), FailsWith(SQLITE_ERROR, "no such function: sha3"));
  }
  EXPECT_EQ(Content(file_), before);
}

INSTANTIATE_TEST_SUITE_P(Guard, UnknownFunction, testing::Bool(),
                         [](const auto& test_case) { return test_case.param ? "On" : "Off"; });

TEST_F(Compaction, IsOneStatementForTheObserverAndChangesNoRow) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");
  const StatementLog log;

  ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  ASSERT_EQ(log.Sql(), std::vector<std::string>{"VACUUM;"});
  EXPECT_EQ(log.All()[0].rows_changed, 0);
}

}  // namespace
}  // namespace corvo::test
