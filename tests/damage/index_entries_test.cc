// Indexes that do not agree with their table. Counting rows reads the smallest index, so that a deletion by number
// would take rows for entries.
#include <sqlite3.h>

#include "damage/damage_fixture.h"

namespace corvo::test {
namespace {

class IndexEntries : public DamageTest {
 protected:
  /// SleepMetricsLog with rows 1 … `rows` and an index of them, which then does not follow `change`.
  void CreateTable(int rows, const std::string& change) const {
    constexpr const char* kIndex = "CREATE INDEX SleepTime ON SleepMetricsLog(time)";
    std::string root;
    {
      Database database = Open();
      database.Run("CREATE TABLE SleepMetricsLog(time, value); CREATE TABLE Kept(value);" + std::string(kIndex));
      database.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
                   ") INSERT INTO SleepMetricsLog SELECT '2024-05-01', i FROM n");
      root = database.Query("SELECT rootpage FROM sqlite_schema WHERE name = 'SleepTime'").at(0).at(0);
      database.Run("PRAGMA writable_schema=ON; DELETE FROM sqlite_schema WHERE name = 'SleepTime'");
    }
    Open().Run(change);
    Open().Run("PRAGMA writable_schema=ON; INSERT INTO sqlite_schema VALUES('index', 'SleepTime', 'SleepMetricsLog', " +
               root + ", '" + kIndex + "')");
  }

  [[nodiscard]] std::int64_t Rows() const {
    return Open().Number("SELECT COUNT(value) FROM SleepMetricsLog NOT INDEXED");
  }

  /// A pass reports the damage and leaves the file as it is.
  void ExpectRefused() const {
    const std::string before = Image::Read(DatabaseFile(Folder())).database;

    const telemetry::common::Error result = Clean();

    EXPECT_EQ(result.code, SQLITE_CORRUPT) << result.what;
    EXPECT_THAT(result.what, testing::HasSubstr("SleepTime"));
    EXPECT_EQ(Image::Read(DatabaseFile(Folder())).database, before);
  }
};

// The contract admits 70 rows, of which a trimming leaves 63.
TEST_F(IndexEntries, MoreThanTheRowsOfTheTableAreDamage) {
  CreateTable(130, "DELETE FROM SleepMetricsLog WHERE value > 65");

  ExpectRefused();

  EXPECT_EQ(Rows(), 65);
}

TEST_F(IndexEntries, FewerThanTheRowsOfTheTableAreDamage) {
  CreateTable(60, "INSERT INTO SleepMetricsLog VALUES('2024-05-01', 61)");

  ExpectRefused();

  EXPECT_EQ(Rows(), 61);
}

TEST_F(IndexEntries, OfATableThatNoContractNamesAreLookedAtToo) {
  CreateTable(10, "DELETE FROM SleepMetricsLog WHERE value = 1; ALTER TABLE SleepMetricsLog RENAME TO Other");
  Open().Run(
      "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET tbl_name = 'Other', "
      "sql = 'CREATE INDEX SleepTime ON Other(time)' WHERE name = 'SleepTime'");
  Open().Run("CREATE TABLE SleepMetricsLog(time, value)");

  ExpectRefused();

  EXPECT_EQ(Open().Number("SELECT COUNT(value) FROM Other NOT INDEXED"), 9);
}

// SQLite's check stops at a hundred findings unless it is asked for more.
TEST_F(IndexEntries, AreComparedThoughManyPagesAreLeaked) {
  CreateTable(10, "DELETE FROM SleepMetricsLog WHERE value = 1");
  Open().Run("CREATE TABLE Large(value); INSERT INTO Large VALUES(zeroblob(1000000)); DROP TABLE Large");
  Edit([](std::string& bytes) { bytes.replace(32, 8, 8, '\0'); });

  ExpectRefused();
}

/// An index that SQLite asks in place of the rows, and that says other things than they do, in as many entries.
class TrustedIndex : public IndexEntries, public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(TrustedIndex, ThatDoesNotAgreeWithItsTableIsDamage) {
  const auto& [made, meant] = GetParam();
  Open().Run(
      "CREATE TABLE SleepMetricsLog(time, value);"
      "INSERT INTO SleepMetricsLog VALUES(datetime('now'), '2001-01-01'), ('2001-01-01', 'x'), ('x', "
      "datetime('now'));" +
      std::string(made));
  Open().Run("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = '" + std::string(meant) +
             "' WHERE name = 'SleepTime'");

  ExpectRefused();

  EXPECT_EQ(Rows(), 3);
}

INSTANTIATE_TEST_SUITE_P(
    IndexEntries, TrustedIndex,
    testing::Values(std::pair("CREATE INDEX SleepTime ON SleepMetricsLog(datetime(value))",
                              "CREATE INDEX SleepTime ON SleepMetricsLog(datetime(time))"),
                    std::pair("CREATE INDEX SleepTime ON SleepMetricsLog(value) WHERE datetime(value) IS NOT NULL",
                              "CREATE INDEX SleepTime ON SleepMetricsLog(value) WHERE datetime(time) IS NOT NULL")));

TEST_F(IndexEntries, OfAFunctionThatNobodyElseHasAreNotCompared) {
  Open().Run("CREATE TABLE SleepMetricsLog(time, value); CREATE INDEX SleepTime ON SleepMetricsLog(abs(value))");
  Open().Run(
      "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = replace(sql, 'abs', 'its_own') "
      "WHERE name = 'SleepTime'");
  Open().Run("CREATE TABLE PowerEvents(time, value); INSERT INTO PowerEvents VALUES('2024-05-01', 1)");

  EXPECT_THAT(Clean().what, testing::Not(testing::HasSubstr("malformed")));
}

TEST_F(IndexEntries, OfPartialAndExpressionIndexesMayBeFewer) {
  Open().Run(
      "CREATE TABLE SleepMetricsLog(time, value); CREATE INDEX Some ON SleepMetricsLog(value) WHERE value > 2;"
      "CREATE INDEX None ON SleepMetricsLog(value) WHERE value > 5; CREATE INDEX Sum ON SleepMetricsLog(value + 1);"
      "CREATE TABLE Keyed(key PRIMARY KEY, value UNIQUE) WITHOUT ROWID; INSERT INTO Keyed VALUES(1, 2), (2, 3);"
      "INSERT INTO SleepMetricsLog VALUES('2024-05-01', 1), ('2024-05-01', 2), ('2024-05-01', 3);");

  EXPECT_FALSE(Clean().Failed());

  EXPECT_EQ(Rows(), 3);
}

}  // namespace
}  // namespace corvo::test
