#include <gtest/gtest.h>

#include <filesystem>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using testing::ElementsAre;

/// The statements that a whole pass sends, each with its database's file name in front.
class CleanDatabases : public EngineTest {
 protected:
  Message* Table(const std::string& database, const std::string& table, ContractOptions options = {}) {
    options.database = database;
    return contracts.Make(table, options);
  }

  /// Runs the pass and keeps what it sent.
  telemetry::common::Error Clean(const DatabaseMap& databases) {
    const StatementLog log;
    auto result = DataCleanup().CleanDatabases(databases);
    sent.clear();
    for (const Statement& statement : log.All()) {
      sent.push_back(statement.file + ": " + statement.sql);
    }
    return result;
  }

  /// A table without a column `time` and without rowid: neither its expiry nor its trimming can succeed.
  void CreateUncleanable(const std::string& database, const std::string& table) const {
    Database file = Open(database);
    file.Run("CREATE TABLE " + table + " (moment TEXT, value PRIMARY KEY) WITHOUT ROWID");
    AddRows(file, table, 2);
  }

  std::vector<std::string> sent;
};

TEST_F(CleanDatabases, NothingToCleanIsASuccess) {
  EXPECT_THAT(Clean({}), Succeeded());
  EXPECT_THAT(sent, testing::IsEmpty());
}

TEST_F(CleanDatabases, DatabaseWithoutTablesIsSkipped) {
  CreateDatabase("A", "T", 1);
  EXPECT_THAT(Clean({{"a", {1, {}}}}), Succeeded());
  EXPECT_THAT(sent, testing::IsEmpty());
}

TEST_F(CleanDatabases, MissingFileIsSkippedSilentlyAndThePassGoesOn) {
  CreateDatabase("B", "T", 1);
  const LogCapture log;
  EXPECT_THAT(Clean({{"a", {1, {Table("A", "T")}}}, {"b", {0, {Table("B", "T")}}}}), Succeeded());
  EXPECT_THAT(sent, ElementsAre("B.db: VACUUM;"));
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(CleanDatabases, DatabasesAreVisitedInAscendingOrderOfTheirKeys) {
  for (const char* name : {"a", "ab", "a_", "B"}) {
    CreateDatabase(name, "T", 1);
  }
  EXPECT_THAT(Clean({{"b", {0, {Table("B", "T")}}},
                     {"ab", {0, {Table("ab", "T")}}},
                     {"a_", {0, {Table("a_", "T")}}},
                     {"a", {0, {Table("a", "T")}}}}),
              Succeeded());
  EXPECT_THAT(sent, ElementsAre("a.db: VACUUM;", "a_.db: VACUUM;", "ab.db: VACUUM;", "B.db: VACUUM;"));
}

TEST_F(CleanDatabases, EveryDatabaseIsFinishedBeforeTheNext) {
  CreateDatabase("A", "T", 10);
  CreateDatabase("A", "U", 10);
  CreateDatabase("B", "V", 10);
  std::filesystem::resize_file(directory / "A.db", 1'000'000);
  const auto* t = Table("A", "T", {.max_rows = 10, .retention_days = 1, .max_size_mb = 1});
  const auto* u = Table("A", "U", {.retention_days = 2, .max_size_mb = 1});
  EXPECT_THAT(Clean({{"a", {1, {t, u}}}, {"b", {0, {Table("B", "V", {.max_rows = 20})}}}}), Succeeded());
  EXPECT_THAT(sent, ElementsAre("A.db: DELETE FROM T WHERE datetime(time) < datetime('2024-05-01T00:00:00+00:00');",
                                "A.db: SELECT COUNT(*) AS rows FROM T",
                                "A.db: DELETE FROM T WHERE rowid IN (SELECT rowid FROM T ORDER BY rowid ASC LIMIT 1);",
                                "A.db: DELETE FROM U WHERE datetime(time) < datetime('2024-04-30T00:00:00+00:00');",
                                "A.db: SELECT pgsize, pageno FROM dbstat WHERE name='T'",
                                "A.db: SELECT pgsize, pageno FROM dbstat WHERE name='U'",
                                "A.db: SELECT COUNT(*) AS rows FROM T",
                                "A.db: DELETE FROM T WHERE rowid IN (SELECT rowid FROM T ORDER BY rowid ASC LIMIT 1);",
                                "A.db: SELECT COUNT(*) AS rows FROM U",
                                "A.db: DELETE FROM U WHERE rowid IN (SELECT rowid FROM U ORDER BY rowid ASC LIMIT 1);",
                                "A.db: VACUUM;", "B.db: SELECT COUNT(*) AS rows FROM V", "B.db: VACUUM;"));
}

TEST_F(CleanDatabases, RowLimitComesAfterExpirySoThatOldRowsDoNotCount) {
  Database database = Open("A");
  CreateTable(database, "T");
  AddRows(database, "T", 5, kOldTime);
  AddRows(database, "T", 9, kRecentTime);
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T", {.max_rows = 10, .retention_days = 7})}}}}), Succeeded());
  EXPECT_EQ(database.Count("T"), 9);
}

TEST_F(CleanDatabases, BothTableStepsRunAndTheFirstFailureWins) {
  CreateUncleanable("A", "T");
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T", {.max_rows = 1, .retention_days = 1})}}}}),
              FailedWith("no such column: time"));
  EXPECT_THAT(sent, ElementsAre(testing::HasSubstr("datetime(time)"), "A.db: SELECT COUNT(*) AS rows FROM T",
                                testing::HasSubstr("LIMIT 2")));
}

TEST_F(CleanDatabases, SecondFailureCountsWhenTheFirstStepSucceeds) {
  CreateUncleanable("A", "T");
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T", {.max_rows = 1})}}}}), FailedWith("no such column: rowid"));
}

TEST_F(CleanDatabases, MissingTableIsForgivenAndTheDatabaseIsFinished) {
  CreateDatabase("A", "U", 10);
  const auto* missing = Table("A", "T", {.max_rows = 1, .retention_days = 1, .max_size_mb = 1});
  const auto* present = Table("A", "U", {.max_rows = 10, .max_size_mb = 1});
  EXPECT_THAT(Clean({{"a", {1, {missing, present}}}}), Succeeded());
  EXPECT_EQ(Open("A").Count("U"), 9);
  EXPECT_THAT(sent, testing::Contains("A.db: SELECT pgsize, pageno FROM dbstat WHERE name='T'"));
  EXPECT_EQ(sent.back(), "A.db: VACUUM;");
}

TEST_F(CleanDatabases, FailingTableStopsThePassAtOnce) {
  CreateUncleanable("A", "T");
  CreateDatabase("A", "U", 10);
  CreateDatabase("B", "V", 10);
  EXPECT_THAT(Clean({{"a", {1, {Table("A", "T", {.retention_days = 1}), Table("A", "U", {.max_rows = 1})}}},
                     {"b", {0, {Table("B", "V", {.max_rows = 1})}}}}),
              FailedWith("no such column: time"));
  EXPECT_THAT(sent, ElementsAre(testing::StartsWith("A.db: DELETE FROM T")));
}

TEST_F(CleanDatabases, DatabasesBeforeTheFailureStayClean) {
  CreateDatabase("A", "T", 10);
  CreateUncleanable("B", "T");
  EXPECT_THAT(
      Clean({{"a", {0, {Table("A", "T", {.max_rows = 10})}}}, {"b", {0, {Table("B", "T", {.retention_days = 1})}}}}),
      FailedWith("no such column: time"));
  EXPECT_EQ(Open("A").Count("T"), 9);
}

TEST_F(CleanDatabases, FailedSizeLimitIsNotFollowedByCompactionOrAnotherDatabase) {
  CreateUncleanable("A", "T");
  CreateDatabase("B", "V", 10);
  std::filesystem::resize_file(directory / "A.db", 1'000'000);
  EXPECT_THAT(Clean({{"a", {1, {Table("A", "T", {.max_size_mb = 1})}}}, {"b", {0, {Table("B", "V")}}}}),
              FailedWith("no such column: rowid"));
  EXPECT_THAT(sent, testing::Not(testing::Contains(testing::HasSubstr("VACUUM"))));
}

TEST_F(CleanDatabases, FailedCompactionIsTheResultAndTheLastStep) {
  CreateDatabase("A", "T", 10);
  CreateDatabase("B", "V", 10);
  // A constraint over a function that this SQLite lacks: rows can go, but the table cannot be made anew.
  Open("A").Run(
      "PRAGMA writable_schema=ON;"
      "UPDATE sqlite_schema SET sql = 'CREATE TABLE T (time TEXT, value CHECK(sha3(value) <> 0))' WHERE name = 'T'");
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T", {.max_rows = 10})}}}, {"b", {0, {Table("B", "V")}}}}),
              FailedWith("no such function: sha3"));
  EXPECT_EQ(sent.back(), "A.db: VACUUM;");
  EXPECT_EQ(Open("A").Count("T"), 9);
}

TEST_F(CleanDatabases, NullTableCountsAsClean) {
  CreateDatabase("A", "T", 10);
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T"), nullptr, Table("A", "T", {.max_rows = 10})}}}}), Succeeded());
  EXPECT_EQ(Open("A").Count("T"), 9);
}

TEST_F(CleanDatabases, NullTableInFrontHasNoFileSoTheDatabaseIsSkipped) {
  CreateDatabase("A", "T", 10);
  EXPECT_THAT(Clean({{"a", {0, {nullptr, Table("A", "T", {.max_rows = 1})}}}}), Succeeded());
  EXPECT_THAT(sent, testing::IsEmpty());
}

TEST_F(CleanDatabases, LaterPassCleansTheFirstContractByTheOptionsOfTheLast) {
  CreateDatabase("A", "First", 10);
  CreateDatabase("A", "Second", 10);
  const auto* first = Table("A", "First", {.max_rows = 10, .max_size_mb = 9});
  const auto* second = Table("A", "S", {.table = "Second", .max_rows = 20, .max_size_mb = 9});
  const DatabaseMap databases{{"a", {9, {first, second}}}};
  EXPECT_THAT(Clean(databases), Succeeded());
  EXPECT_EQ(Open("A").Count("First"), 9);
  EXPECT_THAT(sent, testing::Contains("A.db: SELECT COUNT(*) AS rows FROM First"));
  EXPECT_THAT(Clean(databases), Succeeded());
  EXPECT_THAT(sent,
              ElementsAre("A.db: SELECT COUNT(*) AS rows FROM Second", "A.db: SELECT COUNT(*) AS rows FROM Second",
                          "A.db: SELECT pgsize, pageno FROM dbstat WHERE name='Second'",
                          "A.db: SELECT pgsize, pageno FROM dbstat WHERE name='Second'", "A.db: VACUUM;"));
}

TEST_F(CleanDatabases, TablesThatNoContractNamesAreLeftAlone) {
  CreateDatabase("A", "T", 10);
  CreateDatabase("A", "Foreign_Table", 1000);
  EXPECT_THAT(Clean({{"a", {0, {Table("A", "T", {.max_rows = 10, .retention_days = 1})}}}}), Succeeded());
  EXPECT_EQ(Open("A").Count("Foreign_Table"), 1000);
}

}  // namespace
}  // namespace corvo::test
