#include "cleanup/database_location.h"

#include <gtest/gtest.h>

#include <fstream>

#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::DatabaseFileExists;
using telemetry::cleanup::GetDatabaseFileName;
using telemetry::cleanup::GetDatabaseFullPathName;

class DatabaseLocation : public EngineTest {
 protected:
  /// An empty file of the data directory.
  std::string Touch(const std::string& name) const {
    std::ofstream file(directory / name);
    return directory / name;
  }
};

TEST_F(DatabaseLocation, FileNameIsTheDatabaseWithItsExtension) {
  CreateDatabase("Log", "T", 0);
  EXPECT_EQ(GetDatabaseFileName(contracts.Make("A", {.database = "Log"})), "Log.db");
}

TEST_F(DatabaseLocation, FileNameOfADatabaseThatCannotBeOpenedIsTheTypes) {
  EXPECT_EQ(GetDatabaseFileName(contracts.Make("A", {.database = "Log"})), "A.db");
}

TEST_F(DatabaseLocation, FileNameOfATypeWithoutADatabaseIsTheTypes) {
  EXPECT_EQ(GetDatabaseFileName(contracts.MakeWithoutOptions("Bare")), "Bare.db");
}

TEST_F(DatabaseLocation, FileNameOfNullIsAMarker) { EXPECT_EQ(GetDatabaseFileName(nullptr), "[INVALID FILE]"); }

TEST_F(DatabaseLocation, PathLiesInTheDataDirectory) {
  CreateDatabase("Log", "T", 0);
  EXPECT_EQ(GetDatabaseFullPathName(contracts.Make("A", {.database = "Log"})), directory / "Log.db");
}

TEST_F(DatabaseLocation, PathOfAMissingDatabaseIsNotThere) {
  const LogCapture log;
  const std::string path = GetDatabaseFullPathName(contracts.Make("A", {.database = "Log"}));
  EXPECT_EQ(path, directory / "A.db");
  EXPECT_FALSE(DatabaseFileExists(path.c_str()));
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(DatabaseLocation, PathOfNullIsAMarkerWithoutALogRecord) {
  const LogCapture log;
  EXPECT_EQ(GetDatabaseFullPathName(nullptr), "[INVALID PATHNAME]");
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(DatabaseLocation, MarkersExistNowhere) {
  EXPECT_FALSE(DatabaseFileExists("[INVALID PATHNAME]"));
  EXPECT_FALSE(DatabaseFileExists("[INVALID FILE]"));
}

TEST_F(DatabaseLocation, AnyKindOfEntryExists) {
  std::filesystem::create_directory(directory / "Folder.db");
  EXPECT_TRUE(DatabaseFileExists(Touch("Log.db").c_str()));
  EXPECT_TRUE(DatabaseFileExists((directory / "Folder.db").c_str()));
  EXPECT_FALSE(DatabaseFileExists((directory / "Other.db").c_str()));
}

TEST_F(DatabaseLocation, PathBelowAMissingFolderOrBelowAFileDoesNotExist) {
  const std::string file = Touch("Log.db");
  EXPECT_FALSE(DatabaseFileExists((directory / "missing/Log.db").c_str()));
  EXPECT_FALSE(DatabaseFileExists((file + "/Log.db").c_str()));
}

TEST_F(DatabaseLocation, SymbolicLinksAreFollowed) {
  Touch("Target.db");
  std::filesystem::create_symlink(directory / "Target.db", directory / "Link.db");
  std::filesystem::create_symlink(directory / "Nowhere.db", directory / "Dangling.db");
  EXPECT_TRUE(DatabaseFileExists((directory / "Link.db").c_str()));
  EXPECT_FALSE(DatabaseFileExists((directory / "Dangling.db").c_str()));
}

}  // namespace
}  // namespace corvo::test
