#include <gtest/gtest.h>

#include <fstream>

#include "cleanup/database_location.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::DatabaseFileExists;

class NotFound : public testing::TestWithParam<const char*> {};

TEST_P(NotFound, IsAnAnswerAndNoFailure) { EXPECT_FALSE(DatabaseFileExists(GetParam())); }

INSTANTIATE_TEST_SUITE_P(Paths, NotFound,
                         testing::Values("c:\\no such folder\\x.db", "c:\\x.db", "y:\\x.db", "c:\\windows\\<x>.db",
                                         "c:\\windows\\x?y*.db", "c:\\win|dows\\x.db", "c:\\windows\\a:b:c.db",
                                         "\\\\?\\c:\\no such folder\\x.db", "[INVALID PATHNAME]", "[INVALID FILE]",
                                         "sub/[INVALID FILE]"));

TEST(NotFound, IsAPathBelowAFile) {
  const TempDir directory;
  std::ofstream(directory / "Log.db").flush();
  EXPECT_TRUE(DatabaseFileExists((directory / "Log.db").c_str()));
  EXPECT_FALSE(DatabaseFileExists((directory / "Log.db\\x.db").c_str()));
}

TEST(EntryExists, InAFolderWithANameOfManyScripts) {
  const TempDir directory;
  const std::filesystem::path folder = directory.Path() / u8"Gerät Ж 日本";
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "Log.db").flush();
  EXPECT_TRUE(DatabaseFileExists((folder / "Log.db").string().c_str()));
  EXPECT_FALSE(DatabaseFileExists((folder / "Other.db").string().c_str()));
}

TEST(EntryExists, AtARelativePathIsLookedForInTheCurrentDirectory) {
  const TempDir directory;
  std::filesystem::create_directory(directory.Path() / "sub");
  std::ofstream(directory.Path() / "sub" / "x.db").flush();
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(directory.Path());
  EXPECT_TRUE(DatabaseFileExists("sub\\x.db"));
  EXPECT_TRUE(DatabaseFileExists("./sub/x.db"));
  EXPECT_FALSE(DatabaseFileExists("sub\\y.db"));
  std::filesystem::current_path(former);
}

TEST(EntryExists, BareNameIsLookedUpUnderTheFixedDataDirectory) {
  const std::filesystem::path data = "c:\\ProgramData\\Corvo\\Telemetry\\Data";
  const std::filesystem::path file = data / "ExistenceTest.db";
  ASSERT_FALSE(DatabaseFileExists("ExistenceTest.db"));
  std::filesystem::create_directories(data);
  std::ofstream(file).flush();
  EXPECT_TRUE(DatabaseFileExists("ExistenceTest.db"));
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace corvo::test
