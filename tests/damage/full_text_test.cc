// Full-text indexes that newer versions of SQLite find fault with when a file is checked: no row of a table is at risk.
#include <sqlite3.h>

#include "damage/damage_fixture.h"
#include "support/case_name.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

struct SearchTable {
  const char* name;
  const char* option;  ///< of the build of SQLite that has it
  const char* sql;
  const char* text;  ///< what quick_check says, as a pattern; "ok" before SQLite 3.44

  friend void PrintTo(const SearchTable& table, std::ostream* stream) { *stream << table.name; }
};

constexpr SearchTable kSearchTables[] = {
    {"StaleFts4", "ENABLE_FTS4",
     "CREATE VIRTUAL TABLE Search USING fts4(note); INSERT INTO Search VALUES('one'), ('two');"
     "UPDATE Search_content SET c0note = 'three' WHERE docid = 1;",
     "ok|malformed inverted index for FTS4 table main.Search"},
    {"StaleFts5", "ENABLE_FTS5",
     "CREATE VIRTUAL TABLE Search USING fts5(note); INSERT INTO Search VALUES('one'), ('two');"
     "UPDATE Search_content SET c0 = 'three' WHERE id = 1;",
     "ok|malformed inverted index for FTS5 table main.Search"},
    // As it should be: such an index cannot be compared with anything.
    {"Fts4WithoutContent", "ENABLE_FTS4",
     "CREATE VIRTUAL TABLE Search USING fts4(content='', note); INSERT INTO Search(docid, note) VALUES(1, 'one');",
     "ok|unable to validate the inverted index for FTS4 table main.Search: SQL logic error"},
    // A program may bring tokenizers of its own.
    {"Fts4WithAnUnknownTokenizer", "ENABLE_FTS4",
     "CREATE VIRTUAL TABLE Search USING fts4(note); INSERT INTO Search VALUES('one'); PRAGMA writable_schema=ON;"
     "UPDATE sqlite_schema SET sql = 'CREATE VIRTUAL TABLE Search USING fts4(note, tokenize=own)' "
     "WHERE name = 'Search';",
     "ok|unknown tokenizer: own"},
    {"Fts5WithAnUnknownTokenizer", "ENABLE_FTS5",
     "CREATE VIRTUAL TABLE Search USING fts5(note); INSERT INTO Search VALUES('one'); PRAGMA writable_schema=ON;"
     "UPDATE sqlite_schema SET sql = 'CREATE VIRTUAL TABLE Search USING fts5(note, tokenize=own)' "
     "WHERE name = 'Search';",
     "ok|no such tokenizer: own"}};

std::vector<SearchTable> SearchTables() {
  std::vector<SearchTable> tables;
  for (const SearchTable& table : kSearchTables) {
    if (sqlite3_compileoption_used(table.option) != 0) {
      tables.push_back(table);
    }
  }
  return tables;
}

class FullTextFinding : public DamageTest, public testing::WithParamInterface<SearchTable> {
 protected:
  void SetUp() override {
    Database database = Open();
    database.Run(
        "CREATE TABLE BatteryStatus(time, charge);"
        "INSERT INTO BatteryStatus VALUES('2023-01-01', 1), ('2024-05-01', 2);");
    database.Run(GetParam().sql);
  }

  /// The first finding, or why the check cannot be made.
  [[nodiscard]] std::string QuickCheck() const {
    try {
      return Open().Query("PRAGMA quick_check").at(0).at(0);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  [[nodiscard]] std::vector<Row> Content() const {
    return Open().Query("SELECT hex(" + std::string(IsFts5() ? "block) FROM Search_data" : "root) FROM Search_segdir") +
                        " ORDER BY rowid");
  }

 private:
  [[nodiscard]] static bool IsFts5() { return std::string_view(GetParam().option) == "ENABLE_FTS5"; }
};

TEST_P(FullTextFinding, IsReportedBySqliteOrNot) { EXPECT_THAT(QuickCheck(), ContainsPattern(GetParam().text)); }

TEST_P(FullTextFinding, KeepsNoPassFromCleaning) {
  const std::vector<Row> before = Content();

  const telemetry::common::Error result = Clean();

  EXPECT_FALSE(result.Failed()) << result.what;
  EXPECT_EQ(Open().Query("SELECT charge FROM BatteryStatus"), (std::vector<Row>{{"2"}}));
  EXPECT_EQ(Content(), before);
}

INSTANTIATE_TEST_SUITE_P(Damage, FullTextFinding, testing::ValuesIn(SearchTables()), CaseName());
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FullTextFinding);

}  // namespace
}  // namespace corvo::test
