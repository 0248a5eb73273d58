// Damage to the schema that SQLite itself reads over: it compares types without regard to case and type of value, but
// compaction only takes what is called "table" to the letter and whose statement begins with "CRE", and drops the rest.
#include "damage/damage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

struct SchemaDamage {
  const char* name;
  const char* change;  ///< of one bit of the row that describes the table Kept

  friend void PrintTo(const SchemaDamage& damage, std::ostream* stream) { *stream << damage.name; }
};

class SchemaText : public DamageTest, public testing::WithParamInterface<SchemaDamage> {
 protected:
  void SetUp() override {
    Database database = Open();
    database.Run("CREATE TABLE BatteryStatus(time, charge); CREATE TABLE Kept(value);");
    database.Run("INSERT INTO BatteryStatus VALUES('2023-01-01', 1); INSERT INTO Kept VALUES('kept');");
    database.Run(std::string("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET ") + GetParam().change +
                 " WHERE name = 'Kept'");
  }
};

TEST_P(SchemaText, ThatSqliteReadsOverStillCostsNoRow) {
  ASSERT_EQ(Open().Count("Kept"), 1);

  EXPECT_EQ(Clean().code, 11);

  EXPECT_EQ(Open().Query("SELECT value FROM Kept"), (std::vector<Row>{{"kept"}}));
  EXPECT_EQ(Open().Count("BatteryStatus"), 1) << "nothing is written to a damaged file";
}

INSTANTIATE_TEST_SUITE_P(Damage, SchemaText,
                         testing::Values(SchemaDamage{"TypeInAnotherCase", "type = 'tAble'"},
                                         SchemaDamage{"TypeAsABlob", "type = CAST('table' AS BLOB)"},
                                         SchemaDamage{"StatementInAnotherCase",
                                                      "sql = replace(sql, 'CREATE', 'cREATE')"}),
                         CaseName());

}  // namespace
}  // namespace corvo::test
