// Result rows: their texts, how long they live, how large they may become.
#include <sqlite3.h>

#include <memory>
#include <optional>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using shared::Rows;

class Results : public StorageTest {
 protected:
  Results() { CreateSamples(3); }

  /// The results of one query, whose command and storage are gone.
  Rows ResultsOf(const char* sql) {
    TelemetryStorage storage(file_.c_str(), "");
    auto* command = new SqlCommand(sql);
    EXPECT_THAT(storage.Execute(command, false), Succeeded());
    return command->GetResults();
  }
};

TEST_F(Results, AreTextsInSelectListOrder) {
  EXPECT_EQ(Texts(ResultsOf("SELECT v, id FROM Samples ORDER BY id")),
            (std::vector<Row>{{"value 1", "1"}, {"value 2", "2"}, {"value 3", "3"}}));
}

TEST_F(Results, OfEveryTypeReadAsText) {
  EXPECT_EQ(Texts(ResultsOf("SELECT NULL, 42, 1.5, 'text', '', x'4142'")),
            (std::vector<Row>{{"", "42", "1.5", "text", "", "AB"}}));
}

TEST_F(Results, WithoutRowsAreEmpty) {
  EXPECT_EQ(ResultsOf("SELECT id FROM Samples WHERE id > 9").count, 0);
  EXPECT_EQ(ResultsOf("DELETE FROM Samples").count, 0);
}

TEST_F(Results, MoveIntoAnArrayMadeBeforehand) {
  Rows rows(1);

  rows = ResultsOf("SELECT COUNT(*) AS rows FROM Samples");

  ASSERT_EQ(rows.count, 1);
  ASSERT_EQ(rows.elements[0].count, 1);
  EXPECT_STREQ(rows.elements[0].elements[0].GetColumnValue(), "3");
}

TEST_F(Results, KeepACopiedRowAliveOnTheirOwn) {
  std::optional<Rows> results = ResultsOf("SELECT 'a text that outlives its table', id FROM Samples");
  const shared::DynamicArray<shared::Column> row = (*results)[0];

  results.reset();

  EXPECT_STREQ(row[0].GetColumnValue(), "a text that outlives its table");
}

TEST_F(Results, AreSharedBetweenCopies) {
  const Rows results = ResultsOf("SELECT v FROM Samples");
  const Rows copy = results;

  EXPECT_EQ(copy.elements, results.elements);
}

TEST_F(Results, OfAFailedStatementAreEmpty) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT id, abs(CASE id WHEN 3 THEN -9223372036854775808 ELSE id END) FROM Samples");

  ASSERT_THAT(storage.Execute(command, false), FailsWith(SQLITE_ERROR, "integer overflow"));

  EXPECT_EQ(command->GetResults().count, 0);
}

constexpr const char* kTexts =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 17) "
    "SELECT CAST(zeroblob(16 * 1024 * 1024) AS TEXT) FROM n";
// The last bytes go to the bookkeeping of rows without any text.
constexpr const char* kManyRows =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
    "SELECT CASE WHEN i < 16 THEN CAST(zeroblob(16 * 1024 * 1024) AS TEXT) END FROM n";

class ResultBound : public Results, public testing::WithParamInterface<const char*> {};

TEST_P(ResultBound, EndsAStatementWithMoreThan256Mebibytes) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand(GetParam());

  EXPECT_THAT(storage.Execute(command, false),
              FailsWith(SQLITE_TOOBIG, "string or blob too big: results above 268435456 bytes"));
  EXPECT_EQ(command->GetResults().count, 0);
}

INSTANTIATE_TEST_SUITE_P(Results, ResultBound, testing::Values(kTexts, kManyRows));

TEST_F(Results, AdmitOneTextOfManyMebibytes) {
  const Rows results = ResultsOf("SELECT hex(zeroblob(8 * 1024 * 1024))");

  EXPECT_EQ(std::string(results[0][0].GetColumnValue()), std::string(std::size_t{16} * 1024 * 1024, '0'));
}

}  // namespace
}  // namespace corvo::test
