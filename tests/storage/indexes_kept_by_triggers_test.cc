// Full-text and spatial indexes that triggers keep in step with a table.
#include <sqlite3.h>

#include <ostream>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

/// An index beside the table Samples(id INTEGER PRIMARY KEY, v), how its triggers keep it, and how it is looked
/// through.
struct Kept {
  const char* name;
  const char* schema;
  const char* check;    ///< fails, or answers other than "ok", when the index is not what the table's rows make it
  const char* entries;  ///< counts the rows that the index finds
  const char* ids;      ///< counts those of them that are gone from the table

  friend void PrintTo(const Kept& value, std::ostream* stream) { *stream << value.name; }
};

constexpr Kept kFts4{
    "Fts4",
    "CREATE VIRTUAL TABLE Texts USING fts4(content='Samples', v);"
    "CREATE TRIGGER Before BEFORE DELETE ON Samples BEGIN DELETE FROM Texts WHERE docid = old.id; END;"
    "CREATE TRIGGER Filled AFTER INSERT ON Samples BEGIN INSERT INTO Texts(docid, v) VALUES(new.id, new.v); END",
    "INSERT INTO Texts(Texts) VALUES('integrity-check')", "SELECT COUNT(*) FROM Texts WHERE Texts MATCH 'value'",
    "SELECT COUNT(*) FROM Texts WHERE Texts MATCH 'value' AND docid NOT IN (SELECT id FROM Samples)"};

constexpr Kept kFts5{
    "Fts5",
    "CREATE VIRTUAL TABLE Texts USING fts5(v, content='Samples', content_rowid='id');"
    "CREATE TRIGGER Deleted AFTER DELETE ON Samples BEGIN "
    "INSERT INTO Texts(Texts, rowid, v) VALUES('delete', old.id, old.v); END;"
    "CREATE TRIGGER Filled AFTER INSERT ON Samples BEGIN INSERT INTO Texts(rowid, v) VALUES(new.id, new.v); END",
    // Rank 1 compares an index with content that is kept elsewhere.
    "INSERT INTO Texts(Texts, rank) VALUES('integrity-check', 1)",
    "SELECT COUNT(*) FROM Texts WHERE Texts MATCH 'value'",
    "SELECT COUNT(*) FROM Texts WHERE Texts MATCH 'value' AND rowid NOT IN (SELECT id FROM Samples)"};

constexpr Kept kRtree{
    "Rtree",
    "CREATE VIRTUAL TABLE Areas USING rtree(id, low, high);"
    "CREATE TRIGGER Deleted AFTER DELETE ON Samples BEGIN DELETE FROM Areas WHERE id = old.id; END;"
    "CREATE TRIGGER Filled AFTER INSERT ON Samples BEGIN INSERT INTO Areas VALUES(new.id, new.id, new.id + 1); END",
    "SELECT CASE rtreecheck('Areas') WHEN 'ok' THEN 1 ELSE abs(-9223372036854775807 - 1) END",
    "SELECT COUNT(*) FROM Areas WHERE low >= 0", "SELECT COUNT(*) FROM Areas WHERE id NOT IN (SELECT id FROM Samples)"};

class IndexKeptByTriggers : public StorageTest, public testing::WithParamInterface<std::tuple<Kept, const char*>> {
 protected:
  IndexKeptByTriggers() {
    Database database(file_);
    database.Run("CREATE TABLE Samples(id INTEGER PRIMARY KEY, v)");
    database.Run(Index().schema);
    database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
        "INSERT INTO Samples SELECT i, 'value ' || i FROM n");
  }

  [[nodiscard]] static const Kept& Index() { return std::get<0>(GetParam()); }
};

TEST_P(IndexKeptByTriggers, StaysInStepWithTheTable) {
  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, std::get<1>(GetParam())), Succeeded());
    ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
  }

  Database database(file_);
  EXPECT_NO_THROW(database.Run(Index().check));
  EXPECT_EQ(database.Number(Index().ids), 0);
  EXPECT_EQ(database.Number(Index().entries), database.Count("Samples"));
  EXPECT_LT(database.Count("Samples"), 500);
}

INSTANTIATE_TEST_SUITE_P(TriggersAndViews, IndexKeptByTriggers,
                         testing::Combine(testing::Values(kFts4, kFts5, kRtree),
                                          testing::Values("DELETE FROM Samples WHERE id <= 200",
                                                          "DELETE FROM Samples WHERE rowid IN "
                                                          "(SELECT rowid FROM Samples ORDER BY rowid ASC LIMIT 300)",
                                                          "DELETE FROM Samples")),
                         [](const auto& test_case) {
                           return std::string(std::get<0>(test_case.param).name) + "_" +
                                  std::to_string(test_case.index % 3);
                         });

}  // namespace
}  // namespace corvo::test
