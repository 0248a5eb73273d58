// Failures that must not read like a missing table, which is no failure to a caller that cleans up.
#include <sqlite3.h>

#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A file on which a statement fails with a text that the file chooses.
struct Lure {
  const char* name;
  std::string schema;  ///< run on a database with the table Samples(id INTEGER PRIMARY KEY, v) and three rows
  const char* statement;

  friend void PrintTo(const Lure& value, std::ostream* stream) { *stream << value.name; }
};

class MisleadingFailure : public StorageTest, public testing::WithParamInterface<Lure> {};

TEST_P(MisleadingFailure, StaysAFailureAndKeepsTheRows) {
  CreateSamples(3);
  Database(file_).Run(GetParam().schema);
  {
    TelemetryStorage storage(file_.c_str(), "");

    const Error error = RunSql(storage, GetParam().statement);

    EXPECT_TRUE(error.Failed());
    EXPECT_THAT(error.what, Not(HasSubstr("no such table:")));
    EXPECT_FALSE(shared::IsMissingTable(error));
    EXPECT_THAT(storage.GetLastError().what, Not(HasSubstr("no such table:")));
  }
  Database database(file_);
  sqlite3_db_config(database.Handle(), SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
  EXPECT_EQ(database.Number("SELECT COUNT(*) FROM Samples NOT INDEXED"), 3);
}

constexpr const char* kCount = "SELECT COUNT(*) FROM Samples";
constexpr const char* kDelete = "DELETE FROM Samples";
constexpr const char* kDeleteOne = "DELETE FROM Samples WHERE id = 1";

INSTANTIATE_TEST_SUITE_P(
    OfATrigger, MisleadingFailure,
    testing::Values(
        Lure{"ThatAborts",
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT RAISE(ABORT, 'no such table: x'); END", kDelete},
        Lure{"ThatFails", "CREATE TRIGGER T BEFORE DELETE ON Samples BEGIN SELECT RAISE(FAIL, 'no such table: x'); END",
             kDelete},
        Lure{"ThatRollsBack",
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT RAISE(ROLLBACK, 'no such table: x'); END", kDelete},
        Lure{"ThatWritesToAMissingTable",
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN INSERT INTO Missing VALUES(old.id); END", kDelete},
        Lure{"ThatReadsAMissingTable", "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT * FROM Missing; END",
             kDelete},
        Lure{"WithANotNullColumn",
             "CREATE TABLE Log(\"no such table: x\" NOT NULL); "
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN INSERT INTO Log VALUES(NULL); END",
             kDelete},
        Lure{"WithAUniqueColumn",
             "CREATE TABLE Log(\"no such table: x\" UNIQUE); INSERT INTO Log VALUES(1); "
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN INSERT INTO Log VALUES(1); END",
             kDelete},
        Lure{"WithACheckedColumn",
             "CREATE TABLE Log(x CONSTRAINT \"no such table: x\" CHECK(x > 0)); "
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN INSERT INTO Log VALUES(0); END",
             kDelete},
        Lure{"WithAMissingColumn",
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT old.\"no such table: x\"; END", kDelete},
        Lure{"WithAMissingFunction",
             "CREATE TRIGGER T AFTER DELETE ON Samples BEGIN SELECT \"no such table: x\"(1); END", kDelete}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(OfAView, MisleadingFailure,
                         testing::Values(Lure{"OverAMissingTable", "CREATE VIEW Window AS SELECT * FROM Missing",
                                              "SELECT COUNT(*) FROM Window"},
                                         Lure{"OverAMissingColumn",
                                              "CREATE VIEW Window AS SELECT Samples.\"no such table: x\" FROM Samples",
                                              "SELECT COUNT(*) FROM Window"}),
                         CaseName());

/// A row of the schema's own table, made by hand; `name` is an expression.
std::string SchemaRow(const std::string& type, const std::string& name, const std::string& sql) {
  return "PRAGMA writable_schema=ON; INSERT INTO sqlite_schema VALUES('" + type + "', " + name + ", 'Samples', 0, '" +
         sql + "')";
}

INSTANTIATE_TEST_SUITE_P(
    OfAMalformedSchema, MisleadingFailure,
    testing::Values(
        Lure{"InItsName", SchemaRow("trigger", "'no such table: x'", "CREATE nonsense"), kCount},
        Lure{"InItsNameForADeletion", SchemaRow("trigger", "'no such table: x'", "CREATE nonsense"), kDelete},
        Lure{"InItsNameBeforeAZero",
             SchemaRow("trigger", "CAST(x'6E6F2073756368207461626C653A00' AS TEXT)", "CREATE nonsense"), kDelete},
        Lure{"InItsText", SchemaRow("trigger", "'T'", "CREATE \"no such table: x\""), kDelete},
        Lure{"InATriggersTable",
             SchemaRow("trigger", "'T'", "CREATE TRIGGER T DELETE ON \"no such table: x\" BEGIN SELECT 1; END"),
             kDelete},
        Lure{"InATriggersMissingTable",
             SchemaRow("trigger", "'T'", "CREATE TRIGGER T DELETE ON Missing BEGIN SELECT 1; END"), kDelete},
        Lure{"InAnIndexsMissingTable", SchemaRow("index", "'T'", "CREATE INDEX T ON Missing(x)"), kDelete}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    OfTheTable, MisleadingFailure,
    testing::Values(
        Lure{"WithAMissingCollation",
             "CREATE INDEX ByValue ON Samples(v); PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = "
             "'CREATE INDEX ByValue ON Samples(v COLLATE \"no such table: x\")' WHERE name = 'ByValue'",
             kDeleteOne},
        Lure{"WithAMissingFunction",
             "CREATE INDEX ByValue ON Samples(abs(id)); PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = "
             "'CREATE INDEX ByValue ON Samples(\"no such table: x\"(id))' WHERE name = 'ByValue'",
             kDeleteOne},
        Lure{"WithAMissingModule",
             "PRAGMA writable_schema=ON; INSERT INTO sqlite_schema VALUES('table', 'Found', 'Found', 0, "
             "'CREATE VIRTUAL TABLE Found USING \"no such table: x\"')",
             "DELETE FROM Found"}),
    CaseName());

class MissingTable : public StorageTest {};

TEST_F(MissingTable, OfTheStatementItselfIsToldByItsRecord) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");

  for (const char* statement : {"SELECT COUNT(*) FROM Missing", "DELETE FROM Missing"}) {
    const Error error = RunSql(storage, statement);

    EXPECT_THAT(error, FailsWith(SQLITE_ERROR, StartsWith("no such table: Missing")));
    EXPECT_TRUE(shared::IsMissingTable(error));
  }
}

using DamagedFile = StorageTest;

// A page that belongs to two tables: the finding of the check stands beside those about the column.
TEST_F(DamagedFile, WithAColumnNamedLikeAMissingTableIsStillDamaged) {
  CreateSamples(3);
  {
    Database database(file_);
    database.Run(
        "CREATE TABLE Other(\"no such table: x\"); INSERT INTO Other VALUES(NULL); PRAGMA writable_schema=ON;"
        "UPDATE sqlite_schema SET sql = 'CREATE TABLE Other(\"no such table: x\" NOT NULL)', rootpage = "
        "(SELECT rootpage FROM sqlite_schema WHERE name = 'Samples') WHERE name = 'Other'");
  }
  TelemetryStorage storage(file_.c_str(), "");

  const Error error = RunSql(storage, kDelete);

  EXPECT_THAT(error, FailsWith(SQLITE_CORRUPT, Not(HasSubstr("no such table:"))));
  EXPECT_FALSE(shared::IsMissingTable(error));
  EXPECT_EQ(ReadValue(storage, kCount), "3");
}

}  // namespace
}  // namespace corvo::test
