// Triggers and views of a file work as SQLite has them.
#include <sqlite3.h>

#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class TriggersAndViews : public StorageTest {
 protected:
  TriggersAndViews() { CreateSamples(5); }

  void Run(const std::string& sql) const { Database(file_).Run(sql); }
  [[nodiscard]] std::int64_t Number(const std::string& sql) const { return Database(file_).Number(sql); }
};

TEST_F(TriggersAndViews, CountWhatIsDeleted) {
  Run("CREATE TABLE Counter(n); INSERT INTO Counter VALUES(0);"
      "CREATE TRIGGER Counting AFTER DELETE ON Samples BEGIN UPDATE Counter SET n = n + 1; END");
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id > 2"), Succeeded());

  EXPECT_EQ(Number("SELECT n FROM Counter"), 3);
  EXPECT_EQ(Number("SELECT COUNT(*) FROM Samples"), 2);
}

TEST_F(TriggersAndViews, SpreadADeletionThatTheFileAsksFor) {
  Run("CREATE TABLE Parts(sample); INSERT INTO Parts SELECT id FROM Samples;"
      "CREATE TRIGGER Spread AFTER DELETE ON Samples BEGIN DELETE FROM Parts WHERE sample = old.id; END");
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());

  EXPECT_EQ(Number("SELECT COUNT(*) FROM Parts"), 4);
}

class RowsChangedByTriggers : public TriggersAndViews,
                              public testing::WithParamInterface<std::pair<const char*, std::int64_t>> {};

TEST_P(RowsChangedByTriggers, AreNotThoseOfTheStatement) {
  Run("CREATE TABLE Log(x); CREATE VIEW Window AS SELECT * FROM Samples;"
      "CREATE TRIGGER Deleted AFTER DELETE ON Samples BEGIN INSERT INTO Log VALUES(1), (2), (3); END;"
      "CREATE TRIGGER Changed AFTER UPDATE ON Samples BEGIN DELETE FROM Log; INSERT INTO Log VALUES(4); END");
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
  const StatementLog log;

  ASSERT_THAT(RunSql(storage, GetParam().first), Succeeded());

  EXPECT_EQ(log.All().at(0).rows_changed, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(TriggersAndViews, RowsChangedByTriggers,
                         testing::Values(std::pair("DELETE FROM Samples WHERE id > 3", 2),
                                         std::pair("DELETE FROM Samples", 4),
                                         std::pair("DELETE FROM Samples WHERE id > 9", 0),
                                         std::pair("UPDATE Samples SET v = 1 WHERE id = 2", 1),
                                         std::pair("SELECT COUNT(*) FROM Window", 0), std::pair("VACUUM;", 0)));

struct Aborting {
  const char* name;
  const char* action;

  friend void PrintTo(const Aborting& value, std::ostream* stream) { *stream << value.name; }
};

class AbortingTrigger : public TriggersAndViews, public testing::WithParamInterface<Aborting> {};

TEST_P(AbortingTrigger, FailsTheStatementWithItsTextAndKeepsTheRows) {
  Run(std::string("CREATE TRIGGER Guard AFTER DELETE ON Samples WHEN old.id = 3 BEGIN SELECT RAISE(") +
      GetParam().action + ", 'not today'); END");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), FailsWith(SQLITE_CONSTRAINT_TRIGGER, "not today"));

  EXPECT_EQ(Number("SELECT COUNT(*) FROM Samples"), 5);
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
}

INSTANTIATE_TEST_SUITE_P(TriggersAndViews, AbortingTrigger,
                         testing::Values(Aborting{"Abort", "ABORT"}, Aborting{"Rollback", "ROLLBACK"}), CaseName());

TEST_F(TriggersAndViews, ThatNeverEndAreEndedByTheTimeLimitAndRolledBack) {
  Run("CREATE TABLE Log(x);"
      "CREATE VIEW Endless AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n;"
      "CREATE TRIGGER Looping AFTER DELETE ON Samples BEGIN "
      "INSERT INTO Log VALUES(1); INSERT INTO Log SELECT COUNT(*) FROM Endless; END");
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds(100));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_TRUE(shared::IsInterrupted(RunSql(storage, "DELETE FROM Samples")));

  EXPECT_EQ(Number("SELECT COUNT(*) FROM Samples"), 5);
  EXPECT_EQ(Number("SELECT COUNT(*) FROM Log"), 0);
}

TEST_F(TriggersAndViews, CanBeRead) {
  Run("CREATE VIEW Window AS SELECT id * 10 AS tenfold FROM Samples WHERE id < 3");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(Read(storage, "SELECT tenfold FROM Window ORDER BY tenfold"), (std::vector<Row>{{"10"}, {"20"}}));
}

/// What may stand in a schema but must not be run from there.
struct Barred {
  const char* name;
  const char* schema;
  const char* statement;

  friend void PrintTo(const Barred& value, std::ostream* stream) { *stream << value.name; }
};

class BarredFromSchemas : public TriggersAndViews, public testing::WithParamInterface<Barred> {};

TEST_P(BarredFromSchemas, FailsTheStatementAndKeepsTheRows) {
  Run(GetParam().schema);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, GetParam().statement), FailsWith(SQLITE_ERROR, HasSubstr("unsafe use of")));

  EXPECT_EQ(Number("SELECT COUNT(*) FROM Samples"), 5);
}

INSTANTIATE_TEST_SUITE_P(
    TriggersAndViews, BarredFromSchemas,
    testing::Values(
        Barred{"ExtensionsInATrigger",
               "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT load_extension('libm'); END",
               "DELETE FROM Samples"},
        Barred{"ExtensionsInAView", "CREATE VIEW Window AS SELECT load_extension('libm')", "SELECT * FROM Window"},
        Barred{"StatisticsInATrigger", "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT * FROM dbstat; END",
               "DELETE FROM Samples"},
        Barred{"StatisticsInAView", "CREATE VIEW Window AS SELECT * FROM dbstat", "SELECT * FROM Window"}),
    CaseName());

TEST_F(TriggersAndViews, CannotChangeTheSchema) {
  Run("CREATE TRIGGER T AFTER DELETE ON Samples BEGIN DELETE FROM Other; END; PRAGMA writable_schema=ON;"
      "UPDATE sqlite_schema SET sql = replace(sql, 'Other', 'sqlite_schema') WHERE name = 'T'");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_TRUE(RunSql(storage, "DELETE FROM Samples").Failed());

  EXPECT_EQ(Number("SELECT COUNT(*) FROM Samples"), 5);
  EXPECT_EQ(Number("SELECT COUNT(*) FROM sqlite_schema"), 2);
}

}  // namespace
}  // namespace corvo::test
