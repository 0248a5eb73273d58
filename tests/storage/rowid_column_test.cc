// Tables in which "rowid" is not the row's own number: the oldest rows by rowid would be any rows.
#include <sqlite3.h>

#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct Table {
  const char* name;
  const char* columns;
  const char* row;  ///< the values of one row; ? stands for its number

  friend void PrintTo(const Table& value, std::ostream* stream) { *stream << value.name; }
};

class RowidColumn : public StorageTest, public testing::WithParamInterface<Table> {
 protected:
  RowidColumn() {
    Database database(file_);
    database.Run(std::string("CREATE TABLE Samples") + GetParam().columns);
    for (const char* number : {"1", "2", "3"}) {
      std::string row = GetParam().row;
      row.replace(row.find('?'), 1, number);
      database.Run("INSERT INTO Samples VALUES" + row);
    }
  }

  [[nodiscard]] std::vector<Row> Rows() const { return Database(file_).Query("SELECT * FROM Samples"); }
};

constexpr const char* kTrim =
    "DELETE FROM Samples WHERE rowid IN (SELECT rowid FROM Samples ORDER BY rowid ASC LIMIT 1)";

using ForeignRowid = RowidColumn;

TEST_P(ForeignRowid, RefusesEveryStatementThatWritesToTheTable) {
  const std::vector<Row> before = Rows();
  for (const char* statement : {kTrim, "DELETE FROM Samples WHERE v < 100", "DELETE FROM Samples",
                                "UPDATE Samples SET v = 0", "INSERT INTO Samples DEFAULT VALUES"}) {
    TelemetryStorage storage(file_.c_str(), "");

    const Error error = RunSql(storage, statement);

    EXPECT_THAT(error, FailsWith(SQLITE_AUTH, AllOf(HasSubstr("Samples"), HasSubstr("rowid"))));
    EXPECT_TRUE(shared::IsRefused(error)) << statement;
  }
  EXPECT_EQ(Rows(), before);
}

TEST_P(ForeignRowid, LeavesReadingCompactionAndOtherTablesAlone) {
  Database(file_).Run("CREATE TABLE Other(x); INSERT INTO Other VALUES(1)");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
  EXPECT_EQ(Read(storage, "SELECT pgsize, pageno FROM dbstat WHERE name='Samples'").size(), 1U);
  EXPECT_THAT(RunSql(storage, "DELETE FROM Other WHERE rowid IN (SELECT rowid FROM Other LIMIT 1)"), Succeeded());
  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
}

INSTANTIATE_TEST_SUITE_P(
    RowidColumn, ForeignRowid,
    testing::Values(Table{"Plain", "(rowid, v)", "(0, ?)"}, Table{"UpperCase", "(ROWID TEXT, v)", "('x', ?)"},
                    Table{"Quoted", "(v, \"RowId\" INTEGER)", "(?, 0)"},
                    Table{"Unique", "(rowid INT PRIMARY KEY, v)", "(?, 0)"},
                    Table{"PartOfAPrimaryKey", "(rowid INTEGER, v, PRIMARY KEY(rowid, v))", "(0, ?)"},
                    // SQLite keeps a fault of its first versions: this is no alias.
                    Table{"DescendingPrimaryKey", "(rowid INTEGER PRIMARY KEY DESC, v)", "(?, 0)"},
                    Table{"WithoutRowid", "(v INTEGER PRIMARY KEY, rowid) WITHOUT ROWID", "(?, 0)"},
                    Table{"PrimaryKeyWithoutRowid", "(v, rowid, PRIMARY KEY(v, rowid)) WITHOUT ROWID", "(?, 0)"},
                    Table{"Generated", "(v, rowid AS (0))", "(?)"},
                    Table{"GeneratedAndStored", "(v, rowid AS (0) STORED)", "(?)"},
                    Table{"BesideItsPrimaryKey", "(id INTEGER PRIMARY KEY, rowid, v)", "(?, 0, 0)"}),
    CaseName());

using OwnRowid = RowidColumn;

TEST_P(OwnRowid, TrimsTheOldestRow) {
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, kTrim), Succeeded());

  Database database(file_);
  EXPECT_EQ(database.Count("Samples"), 2);
  EXPECT_EQ(database.Number("SELECT MIN(v) FROM Samples"), 2);
}

INSTANTIATE_TEST_SUITE_P(
    RowidColumn, OwnRowid,
    testing::Values(Table{"PrimaryKey", "(rowid INTEGER PRIMARY KEY, v AS (rowid))", "(?)"},
                    Table{"CountingPrimaryKey", "(v AS (rowid), RowID INTEGER PRIMARY KEY AUTOINCREMENT)", "(?)"},
                    Table{"PrimaryKeyOfTheTable", "(v AS (rowid), rowid INTEGER, PRIMARY KEY(rowid))", "(?)"},
                    Table{"DescendingPrimaryKeyOfTheTable", "(v AS (rowid), rowid INTEGER, PRIMARY KEY(rowid DESC))",
                          "(?)"},
                    Table{"OtherNamesOfTheNumber", "(_rowid_, oid, v)", "(9, 9, ?)"},
                    Table{"SimilarNames", "(rowid_, \" rowid\", row_id, v)", "(9, 9, 9, ?)"},
                    Table{"NoSuchColumn", "(v)", "(?)"}),
    CaseName());

class WithoutRowid : public StorageTest {};

TEST_F(WithoutRowid, AndWithoutSuchAColumnATableCanBeWrittenButNotTrimmed) {
  Database(file_).Run("CREATE TABLE Samples(v INTEGER PRIMARY KEY) WITHOUT ROWID; INSERT INTO Samples VALUES(1), (2)");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE v = 1"), Succeeded());
  EXPECT_THAT(RunSql(storage, kTrim), AllOf(Not(Succeeded()), testing::Field(&Error::what, HasSubstr("rowid"))));

  EXPECT_EQ(Database(file_).Count("Samples"), 1);
}

}  // namespace
}  // namespace corvo::test
