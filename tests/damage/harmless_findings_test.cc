// What SQLite's check reports although every row is there: such a database is cleaned like any other.
#include "damage/damage_fixture.h"
#include "support/case_name.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

constexpr std::size_t kFirstFreePageField = 32;

/// A database with such a finding. Its cleaned table is BatteryStatus(time, charge, …) with one expired row and three
/// recent ones, of charge 1 to 4.
struct Finding {
  const char* name;
  const char* sql;         ///< creates the tables
  const char* schema;      ///< statement that BatteryStatus has from then on; null leaves it
  bool forget_free_pages;  ///< so that pages are in no list
  const char* text;        ///< what quick_check says, as a pattern; newer versions look at more

  friend void PrintTo(const Finding& finding, std::ostream* stream) { *stream << finding.name; }
};

constexpr const char* kRows =
    "INSERT INTO BatteryStatus VALUES('2023-01-01T00:00:00+00:00', 1, NULL), ('2024-05-01T01:00:00+00:00', 2, NULL),"
    "('2024-05-01T02:00:00+00:00', 3, 'text'), ('2024-05-01T03:00:00+00:00', 4, 5);"
    "CREATE TABLE Kept(value); INSERT INTO Kept VALUES('kept');";

constexpr const char* kPlain = "CREATE TABLE BatteryStatus(time, charge, note);";

constexpr const char* kFreePages =
    "CREATE TABLE BatteryStatus(time, charge, note);"
    "CREATE TABLE Large(value); INSERT INTO Large VALUES(zeroblob(600000)); DROP TABLE Large;";

constexpr const char* kFreePagesAndPointerMap =
    "PRAGMA auto_vacuum=INCREMENTAL; CREATE TABLE BatteryStatus(time, charge, note);"
    "CREATE TABLE Large(value); INSERT INTO Large VALUES(zeroblob(100000)); DROP TABLE Large;";

constexpr const char* kNeverUsed = R"(Page \d+(:| is) never used)";

const Finding kFindings[] = {
    {"LeakedPages", kFreePages, nullptr, true, kNeverUsed},
    {"LeakedPagesWithPointerMap", kFreePagesAndPointerMap, nullptr, true, kNeverUsed},
    {"NullInNotNullColumn", kPlain, "CREATE TABLE BatteryStatus(time, charge, note NOT NULL)", false,
     "NULL value in BatteryStatus.note"},
    {"WrongTypeInStrictTable", kPlain, "CREATE TABLE BatteryStatus(time TEXT, charge INT, note INT) STRICT", false,
     "non-INT value in BatteryStatus.note"},
    {"NumberInTextColumn", kPlain, "CREATE TABLE BatteryStatus(time, charge, note TEXT)", false,
     "NUMERIC value in BatteryStatus.note"},
    {"NumeralInNumericColumn",
     "CREATE TABLE BatteryStatus(time, charge, note); INSERT INTO BatteryStatus VALUES('2023-01-01', 0, '12');",
     "CREATE TABLE BatteryStatus(time, charge, note INTEGER)", false, "TEXT value in BatteryStatus.note"},
    {"BrokenCheckConstraint", kPlain, "CREATE TABLE BatteryStatus(time, charge, note CHECK(note <> 5))", false,
     "CHECK constraint failed in BatteryStatus"}};

class HarmlessFinding : public DamageTest, public testing::WithParamInterface<Finding> {
 protected:
  void SetUp() override {
    {
      Database database = Open();
      database.Run(GetParam().sql);
      database.Run(kRows);
      if (GetParam().schema != nullptr) {
        database.Run(std::string("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = '") + GetParam().schema +
                     "' WHERE name = 'BatteryStatus'");
      }
    }
    if (GetParam().forget_free_pages) {
      Edit([](std::string& bytes) { bytes.replace(kFirstFreePageField, 8, 8, '\0'); });
    }
  }
};

TEST_P(HarmlessFinding, IsReportedBySqlite) {
  EXPECT_THAT(Open().Query("PRAGMA quick_check").at(0).at(0), ContainsPattern(GetParam().text));
}

TEST_P(HarmlessFinding, KeepsNoPassFromCleaning) {
  const telemetry::common::Error result = Clean();

  EXPECT_FALSE(result.Failed()) << result.what;
  Database database = Open();
  EXPECT_EQ(database.Query("SELECT charge FROM BatteryStatus"), (std::vector<Row>{{"2"}, {"3"}, {"4"}}));
  EXPECT_EQ(database.Query("SELECT value FROM Kept"), (std::vector<Row>{{"kept"}}));
  EXPECT_EQ(database.Query("PRAGMA freelist_count"), (std::vector<Row>{{"0"}})) << "compacted";
}

INSTANTIATE_TEST_SUITE_P(Damage, HarmlessFinding, testing::ValuesIn(kFindings), CaseName());

}  // namespace
}  // namespace corvo::test
