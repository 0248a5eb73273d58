// What a storage opens, and what it leaves alone.
#include <sqlite3.h>

#include <fstream>
#include <ostream>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::EndsWith;
using testing::StartsWith;

using Opening = StorageTest;

TEST_F(Opening, ReadsAndWritesAnExistingDatabase) {
  CreateSamples(3);

  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.GetLastError(), Succeeded());
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 2"), Succeeded());
  EXPECT_EQ(Read(storage, "SELECT id FROM Samples"), (std::vector<Row>{{"1"}, {"3"}}));
}

TEST_F(Opening, NeverCreatesAFile) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "CREATE TABLE T(x)"),
              FailsWith(SQLITE_CANTOPEN, StartsWith("unable to open database file: ")));
  EXPECT_TRUE(std::filesystem::is_empty(dir_.Path()));
}

TEST_F(Opening, ReportsAMissingFileAtOnceAndInEveryExecute) {
  TelemetryStorage storage(file_.c_str(), "");
  const auto missing = FailsWith(SQLITE_CANTOPEN, EndsWith("no such file"));

  EXPECT_THAT(storage.GetLastError(), missing);
  EXPECT_THAT(RunSql(storage, "SELECT 1"), missing);
  EXPECT_THAT(RunSql(storage, "SELECT 1"), missing);
}

TEST_F(Opening, IsForTheFirstStatement) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(storage.GetLastError(), Succeeded());

  std::filesystem::remove(file_);

  EXPECT_THAT(RunSql(storage, "SELECT 1"), FailsWith(SQLITE_CANTOPEN, "unable to open database file"));
  EXPECT_TRUE(std::filesystem::is_empty(dir_.Path()));
  CreateSamples(2);
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "2");
}

TEST_F(Opening, RefusesADirectory) {
  std::filesystem::create_directory(file_);

  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT 1"), FailsWith(SQLITE_CANTOPEN_ISDIR, EndsWith("not a regular file")));
}

TEST_F(Opening, RefusesADirectoryInTheJournalsPlace) {
  CreateSamples(1);
  std::filesystem::create_directory(file_ + "-journal");

  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT 1"), FailsWith(SQLITE_CANTOPEN, EndsWith("Test.db-journal: not a regular file")));
}

TEST_F(Opening, FollowsASymbolicLinkToADatabase) {
  CreateSamples(1);
  const std::string link = dir_ / "Link.db";
  std::filesystem::create_symlink(file_, link);

  TelemetryStorage storage(link.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
  EXPECT_STREQ(storage.GetDataBasePath(), link.c_str());
}

TEST_F(Opening, ReportsAFileThatIsNoDatabase) {
  std::ofstream(file_) << std::string(4096, 'x');

  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"), FailsWith(SQLITE_NOTADB, "file is not a database"));
}

TEST_F(Opening, TakesAnEmptyFileAsAnEmptyDatabaseAndLeavesItEmpty) {
  std::ofstream(file_).flush();

  {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), FailsWith(SQLITE_ERROR, "no such table: Samples"));
  }

  EXPECT_EQ(std::filesystem::file_size(file_), 0U);
}

TEST_F(Opening, WaitsForNoLock) {
  CreateSamples(1);
  Database other(file_);
  other.Run("BEGIN EXCLUSIVE");
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, std::chrono::hours(1));

  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.GetLastError(), Succeeded());
}

TEST_F(Opening, ClosesTheDatabaseWithTheStorage) {
  CreateSamples(1);
  Database(file_).Run("PRAGMA journal_mode=WAL");

  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
    ASSERT_TRUE(std::filesystem::exists(file_ + "-wal"));
  }

  EXPECT_FALSE(std::filesystem::exists(file_ + "-wal")) << "the last connection takes the log with it";
}

struct PlainName {
  const char* what;
  const char8_t* text;

  friend void PrintTo(const PlainName& value, std::ostream* stream) { *stream << value.what; }
};

class PlainNames : public StorageTest, public testing::WithParamInterface<PlainName> {};

TEST_P(PlainNames, AreFileNamesAndNothingElse) {
  const std::string name = std::filesystem::path(GetParam().text).string();
  Database(dir_.Path() / "plain.db").Run("CREATE TABLE Found(x)");
  std::filesystem::rename(dir_.Path() / "plain.db", dir_.Path() / name);
  shared::SetDataDirectory(dir_.Path().string());

  TelemetryStorage storage(name.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Found"), Succeeded());
  EXPECT_EQ(storage.GetDataBaseName(), name);
}

INSTANTIATE_TEST_SUITE_P(Opening, PlainNames,
                         testing::Values(PlainName{"Spaces", u8"a b%20c#d.db"},
                                         PlainName{"NonAscii", u8"Gerät 数据.db"},
                                         PlainName{"NoExtension", u8"no extension"}, PlainName{"Dashes", u8"-wal"},
                                         PlainName{"Quotes", u8"o'clock.db"}),
                         [](const auto& name) { return name.param.what; });

}  // namespace
}  // namespace corvo::test
