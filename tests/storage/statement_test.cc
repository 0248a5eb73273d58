// One statement: what runs, what is refused, how failures read.
#include <sqlite3.h>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

class Statement : public StorageTest {
 protected:
  Statement() { CreateSamples(3); }
};

TEST_F(Statement, OnAMissingTableNamesItFirst) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Missing WHERE datetime(time) < datetime('')"),
              FailsWith(SQLITE_ERROR, "no such table: Missing"));
}

TEST_F(Statement, FailsWithTheExtendedCode) {
  Database(file_).Run("CREATE UNIQUE INDEX OneValue ON Samples(v)");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "INSERT INTO Samples VALUES(1, 'x')"),
              FailsWith(SQLITE_CONSTRAINT_PRIMARYKEY, "UNIQUE constraint failed: Samples.id"));
  EXPECT_THAT(RunSql(storage, "INSERT INTO Samples VALUES(9, 'value 1')"),
              FailsWith(SQLITE_CONSTRAINT_UNIQUE, "UNIQUE constraint failed: Samples.v"));
}

TEST_F(Statement, DoesNotWriteToAFileThatHasGone) {
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
  std::filesystem::rename(file_, dir_ / "Moved.db");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"),
              FailsWith(SQLITE_READONLY_DBMOVED, "attempt to write a readonly database"));
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(Statement, LeavesItsOutcomeInGetLastError) {
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_TRUE(RunSql(storage, "DELETE FROM Missing").Failed());
  EXPECT_THAT(storage.GetLastError(), FailsWith(SQLITE_ERROR, "no such table: Missing"));

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
  EXPECT_THAT(storage.GetLastError(), Succeeded());
}

TEST_F(Statement, ThatRunsLongerThanItsLimitIsEnded) {
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds(1));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT MAX(i) FROM n"),
              FailsWith(SQLITE_INTERRUPT, "interrupted"));
}

TEST_F(Statement, WithinAVeryLongLimitRuns) {
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds::max());
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage,
                      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000) "
                      "SELECT MAX(i) FROM n"),
            "100000");
}

class OneStatement : public Statement, public testing::WithParamInterface<const char*> {};

TEST_P(OneStatement, RunsWithWhatMayFollowIt) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, GetParam()), Succeeded());
  EXPECT_EQ(Database(file_).Count("Samples"), 0);
}

INSTANTIATE_TEST_SUITE_P(Statement, OneStatement,
                         testing::Values("DELETE FROM Samples", "DELETE FROM Samples;", "DELETE FROM Samples; \t\r\n;",
                                         "DELETE FROM Samples; -- all", "DELETE FROM Samples; /* all */ ;",
                                         "DELETE FROM Samples; /* open", "DELETE FROM Samples -- ; all",
                                         "-- first\nDELETE FROM Samples", ";DELETE FROM Samples"));

class SeveralStatements : public Statement, public testing::WithParamInterface<const char*> {};

TEST_P(SeveralStatements, AreRefusedBeforeAnythingRuns) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, GetParam()),
              FailsWith(SQLITE_MISUSE, "bad parameter or other API misuse: more than one statement"));
  EXPECT_EQ(Database(file_).Count("Samples"), 3);
}

INSTANTIATE_TEST_SUITE_P(Statement, SeveralStatements,
                         testing::Values("DELETE FROM Samples; DELETE FROM Samples", "DELETE FROM Samples; nonsense",
                                         "DELETE FROM Samples; -- all\n SELECT 1", "DELETE FROM Samples; /**/ SELECT 1",
                                         "DELETE FROM Samples; - 1", "DELETE FROM Samples; / 1"));

class NoStatement : public Statement, public testing::WithParamInterface<const char*> {};

TEST_P(NoStatement, IsRefused) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.Execute(new SqlCommand(GetParam()), false),
              FailsWith(SQLITE_MISUSE, "bad parameter or other API misuse: no statement"));
}

INSTANTIATE_TEST_SUITE_P(Statement, NoStatement, testing::Values(nullptr, "", " \n", ";", "-- nothing", "/* nothing"));

class JournalModes : public Statement, public testing::WithParamInterface<const char*> {};

TEST_P(JournalModes, StayAsTheyAreAndSoDoesTheSchema) {
  const std::string schema = "SELECT type, name, tbl_name, sql FROM sqlite_schema";
  Database(file_).Run(std::string("PRAGMA journal_mode=") + GetParam());
  const std::vector<Row> before = Database(file_).Query(schema);

  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
    ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
  }

  Database after(file_);
  EXPECT_EQ(after.Query("PRAGMA journal_mode"), (std::vector<Row>{{GetParam()}}));
  EXPECT_EQ(after.Query(schema), before);
  EXPECT_EQ(after.Count("Samples"), 2);
}

INSTANTIATE_TEST_SUITE_P(Statement, JournalModes, testing::Values("delete", "wal"),
                         [](const auto& mode) { return std::string(mode.param); });

}  // namespace
}  // namespace corvo::test
