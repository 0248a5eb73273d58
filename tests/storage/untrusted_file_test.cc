// A database file is untrusted input.
#include <sqlite3.h>

#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using UntrustedFile = StorageTest;

TEST_F(UntrustedFile, RunsNoTriggerOfItsOwnWhenTheyAreSwitchedOff) {
  const OptionScope off(&shared::StorageOptions::triggers_and_views, false);
  CreateSamples(3);
  Database database(file_);
  database.Run("CREATE TABLE Kept(x); INSERT INTO Kept VALUES(1);");
  database.Run("CREATE TRIGGER Spread AFTER DELETE ON Samples BEGIN DELETE FROM Kept; END");
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());

  EXPECT_EQ(database.Count("Samples"), 0);
  EXPECT_EQ(database.Count("Kept"), 1);
}

TEST_F(UntrustedFile, DeletesNothingThroughForeignKeys) {
  CreateSamples(3);
  Database database(file_);
  database.Run("CREATE TABLE Kept(x REFERENCES Samples(id) ON DELETE CASCADE); INSERT INTO Kept VALUES(1);");
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());

  EXPECT_EQ(database.Count("Kept"), 1);
}

TEST_F(UntrustedFile, HasNoViewsWhenTheyAreSwitchedOff) {
  const OptionScope off(&shared::StorageOptions::triggers_and_views, false);
  CreateSamples(1);
  Database(file_).Run("CREATE VIEW Window AS SELECT * FROM Samples");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Window"), FailsWith(SQLITE_ERROR, HasSubstr("view")));
}

TEST_F(UntrustedFile, KeepsTriggersAndViewsThroughCompaction) {
  CreateSamples(1);
  Database database(file_);
  database.Run("CREATE VIEW Window AS SELECT * FROM Samples");
  database.Run("CREATE TRIGGER Spread AFTER DELETE ON Samples BEGIN SELECT 1; END");
  const std::vector<Row> schema = database.Query("SELECT type, name, sql FROM sqlite_schema ORDER BY name");
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());

  EXPECT_EQ(database.Query("SELECT type, name, sql FROM sqlite_schema ORDER BY name"), schema);
}

TEST_F(UntrustedFile, CannotChangeItsSchemaByHand) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "PRAGMA writable_schema=ON"), Succeeded());

  EXPECT_THAT(RunSql(storage, "DELETE FROM sqlite_schema"),
              FailsWith(SQLITE_ERROR, "table sqlite_master may not be modified"));
}

TEST_F(UntrustedFile, LoadsNoExtension) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT load_extension('libm')"), FailsWith(SQLITE_ERROR, StartsWith("not authorized")));
}

TEST_F(UntrustedFile, GivesErrorTextsThatAreValidUtf8) {
  CreateSamples(1);
  Database(file_).Run(
      "PRAGMA writable_schema=ON;"
      "UPDATE sqlite_schema SET name = CAST(x'4261FF64' AS TEXT), sql = CAST(x'FEFEFE' AS TEXT)");
  TelemetryStorage storage(file_.c_str(), "");

  const Error error = RunSql(storage, "SELECT COUNT(*) FROM Samples");

  EXPECT_THAT(error, FailsWith(SQLITE_CORRUPT, StartsWith("malformed database schema (Ba\xEF\xBF\xBD"
                                                          "d)")));
  EXPECT_NE(ErrorText(error), "(null)");
}

class PlantedStatistics : public StorageTest, public testing::WithParamInterface<const char*> {};

TEST_P(PlantedStatistics, AreRefusedForEveryStatement) {
  CreateSamples(1);
  Database(file_).Run(GetParam());
  TelemetryStorage storage(file_.c_str(), "");
  const auto refused = FailsWith(SQLITE_AUTH, StartsWith("authorization denied: the schema has an object named "));

  EXPECT_THAT(storage.GetLastError(), Succeeded()) << "the schema is not read before it is needed";
  EXPECT_THAT(RunSql(storage, "SELECT pgsize, pageno FROM dbstat WHERE name='Samples'"), refused);
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), refused);
  EXPECT_EQ(Database(file_).Count("Samples"), 1);
}

INSTANTIATE_TEST_SUITE_P(
    UntrustedFile, PlantedStatistics,
    testing::Values("CREATE TABLE dbstat(name, pgsize, pageno)",
                    "CREATE VIEW DbStat AS SELECT 'Samples' AS name, 4096 AS pgsize, 999999 AS pageno",
                    "CREATE TABLE DBSTAT(x)"));

TEST_F(UntrustedFile, AnswersPageStatisticsFromTheEngine) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(Read(storage, "SELECT pgsize, pageno FROM dbstat WHERE name='Samples'"), (std::vector<Row>{{"4096", "2"}}));
}

struct Option {
  const char* pragma;
  const char* value;

  friend void PrintTo(const Option& option, std::ostream* stream) { *stream << option.pragma; }
};

class ConnectionOptions : public StorageTest, public testing::WithParamInterface<Option> {};

TEST_P(ConnectionOptions, AreInForce) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, std::string("PRAGMA ") + GetParam().pragma), GetParam().value);
}

// secure_delete 2 is FAST.
INSTANTIATE_TEST_SUITE_P(UntrustedFile, ConnectionOptions,
                         testing::Values(Option{"secure_delete", "2"}, Option{"trusted_schema", "0"},
                                         Option{"cell_size_check", "1"}, Option{"mmap_size", "0"},
                                         Option{"foreign_keys", "0"}),
                         [](const auto& option) { return option.param.pragma; });

struct Excess {
  const char* what;
  std::string sql;
  int code;

  friend void PrintTo(const Excess& value, std::ostream* stream) { *stream << value.what; }
};

std::string Repeated(const std::string& text, int times) {
  std::string repeated;
  for (int time = 0; time < times; ++time) {
    repeated += text;
  }
  return repeated;
}

class Limits : public StorageTest, public testing::WithParamInterface<Excess> {};

TEST_P(Limits, AreInForce) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, GetParam().sql), FailsWith(GetParam().code, testing::_));
}

INSTANTIATE_TEST_SUITE_P(
    UntrustedFile, Limits,
    testing::Values(Excess{"RowLength", "SELECT length(zeroblob(256 * 1024 * 1024 + 1))", SQLITE_TOOBIG},
                    Excess{"StatementLength", "SELECT 1 --" + std::string(std::size_t{1024} * 1024, '-'),
                           SQLITE_TOOBIG},
                    Excess{"ExpressionDepth", "SELECT 1" + Repeated(" + 1", 501), SQLITE_ERROR},
                    Excess{"PatternLength", "SELECT 'a' LIKE '" + std::string(1001, '%') + "'", SQLITE_ERROR}),
    [](const auto& excess) { return excess.param.what; });

TEST_F(UntrustedFile, WithALongTextInItsSchemaIsTooBigAndNotDamaged) {
  CreateSamples(1);
  Database(file_).Run("CREATE TABLE Long(x DEFAULT '" + std::string(std::size_t{1024} * 1024, 'x') + "')");
  TelemetryStorage storage(file_.c_str(), "");

  const Error error = RunSql(storage, "DELETE FROM Samples");

  EXPECT_TRUE(shared::IsTooBig(error)) << ErrorText(error);
  EXPECT_FALSE(shared::IsDamaged(error));
}

TEST_F(UntrustedFile, CanBeJoinedByOneOtherDatabaseOnly) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "ATTACH ':memory:' AS one"), Succeeded());
  EXPECT_THAT(RunSql(storage, "ATTACH ':memory:' AS two"),
              FailsWith(SQLITE_ERROR, "too many attached databases - max 1"));
}

TEST_F(UntrustedFile, MayHoldLargeRowsAndStillBeCompacted) {
  CreateSamples(1);
  Database(file_).Run("INSERT INTO Samples VALUES(2, zeroblob(20000000))");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
  EXPECT_EQ(ReadValue(storage, "SELECT length(v) FROM Samples WHERE id = 2"), "20000000");
}

}  // namespace
}  // namespace corvo::test
