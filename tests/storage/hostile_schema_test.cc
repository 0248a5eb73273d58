// Schemas made to mislead: SQLite reads names up to their first zero byte, and quotes them in its error texts.
#include <sqlite3.h>

#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A schema that is made by statements of SQL, for a database with the table Samples(id INTEGER PRIMARY KEY, v).
struct Schema {
  const char* name;
  std::string sql;

  friend void PrintTo(const Schema& value, std::ostream* stream) { *stream << value.name; }
};

class HostileSchema : public StorageTest, public testing::WithParamInterface<Schema> {
 protected:
  HostileSchema() {
    CreateSamples(3);
    Database(file_).Run(GetParam().sql);
  }

  /// Rows of Samples, whatever the schema is by now.
  [[nodiscard]] std::int64_t RowsLeft() const {
    Database database(file_);
    sqlite3_db_config(database.Handle(), SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
    return database.Count("Samples");
  }
};

using RefusedSchema = HostileSchema;

TEST_P(RefusedSchema, RunsNoStatementAndKeepsItsRows) {
  for (const char* statement :
       {"SELECT COUNT(*) FROM Samples", "SELECT pgsize, pageno FROM dbstat WHERE name='Samples'",
        "DELETE FROM Samples WHERE rowid IN (SELECT rowid FROM Samples ORDER BY rowid ASC LIMIT 1)", "VACUUM;"}) {
    TelemetryStorage storage(file_.c_str(), "");

    const Error error = RunSql(storage, statement);

    EXPECT_THAT(error, FailsWith(SQLITE_AUTH, Not(HasSubstr("no such table:")))) << statement;
    EXPECT_TRUE(shared::IsRefused(error)) << statement;
  }
  EXPECT_EQ(RowsLeft(), 3);
}

/// Creates an object and then gives it, in a column of the schema's own table, a text of these bytes.
std::string Changed(const std::string& create, const std::string& name, const std::string& column,
                    const std::string& bytes) {
  return create + "; PRAGMA writable_schema=ON; UPDATE sqlite_schema SET " + column + " = CAST(x'" + bytes +
         "' AS TEXT) WHERE name = '" + name + "'";
}

std::string Renamed(const std::string& create, const std::string& name, const std::string& bytes) {
  return Changed(create, name, "name", bytes);
}

// The name, a zero byte, and something that makes a comparison of whole names see another name.
constexpr const char* kStatistics = "64627374617400783031";
constexpr const char* kUpperCaseStatistics = "44425354415400";
constexpr const char* kOther = "4F746865720031";
constexpr const char* kOtherAndNothing = "4F7468657200";
constexpr const char* kTable = "7461626C6500";
constexpr const char* kSamples = "53616D706C657300";

INSTANTIATE_TEST_SUITE_P(
    StatisticsOfItsOwn, RefusedSchema,
    testing::Values(Schema{"Table", "CREATE TABLE dbstat(name, pgsize, pageno)"},
                    Schema{"TableAndZero", Renamed("CREATE TABLE dbstat(name, pgsize, pageno);"
                                                   "INSERT INTO dbstat VALUES('Samples', 4096, 999999)",
                                                   "dbstat", kStatistics)},
                    Schema{"ViewAndZero",
                           Renamed("CREATE VIEW dbstat AS SELECT 'Samples' AS name, 4096 AS pgsize, 999 AS pageno",
                                   "dbstat", kStatistics)},
                    Schema{"UpperCaseTableAndZero",
                           Renamed("CREATE TABLE DBSTAT(name, pgsize, pageno)", "DBSTAT", kUpperCaseStatistics)}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    NameWithAZeroByte, RefusedSchema,
    testing::Values(
        Schema{"Table", Renamed("CREATE TABLE Other(x)", "Other", kOther)},
        Schema{"Index", Renamed("CREATE INDEX Other ON Samples(v)", "Other", kOther)},
        Schema{"Trigger", Renamed("CREATE TRIGGER Other AFTER DELETE ON Samples BEGIN SELECT 1; END", "Other", kOther)},
        Schema{"EndOfAView", Renamed("CREATE VIEW Other AS SELECT 1", "Other", kOtherAndNothing)},
        Schema{"TypeOfATable", Changed("CREATE TABLE Other(x)", "Other", "type", kTable)},
        Schema{"TableOfAnIndex", Changed("CREATE INDEX Other ON Samples(v)", "Other", "tbl_name", kSamples)}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    NameLikeAMissingTable, RefusedSchema,
    testing::Values(Schema{"Table", "CREATE TABLE \"no such table: x\"(x)"},
                    Schema{"Index", "CREATE INDEX \"no such table: x\" ON Samples(v)"},
                    Schema{"Trigger",
                           "CREATE TRIGGER \"no such table: x\" AFTER DELETE ON Samples BEGIN SELECT 1; END"},
                    Schema{"View", "CREATE VIEW \"no such table: x\" AS SELECT 1"},
                    Schema{"PartOfAName", "CREATE TABLE \"Notes, no such table: x\"(x)"}),
    CaseName());

using HarmlessSchema = HostileSchema;

TEST_P(HarmlessSchema, IsWorkedWith) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(Read(storage, "SELECT DISTINCT name FROM dbstat WHERE name = 'Samples'"), (std::vector<Row>{{"Samples"}}));
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
  EXPECT_EQ(RowsLeft(), 2);
}

INSTANTIATE_TEST_SUITE_P(StatisticsInNameOnly, HarmlessSchema,
                         testing::Values(Schema{"Index", "CREATE INDEX dbstat ON Samples(v)"},
                                         Schema{"Trigger",
                                                "CREATE TRIGGER dbstat AFTER DELETE ON Samples BEGIN SELECT 1; END"},
                                         Schema{"Column", "CREATE TABLE Other(dbstat, \"no such table: x\")"},
                                         Schema{"LongerName", "CREATE TABLE dbstats(x); CREATE TABLE \"dbstat \"(x)"}),
                         CaseName());

}  // namespace
}  // namespace corvo::test
