#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "cleanup/database_location.h"
#include "cleanup/engine_fixture.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::DatabaseFileExists;

/// Runs in the data directory.
class RelativePaths : public EngineTest {
 protected:
  RelativePaths() { std::filesystem::current_path(directory.Path()); }
  ~RelativePaths() override { std::filesystem::current_path(former); }

  static void Touch(const std::string& name) { std::ofstream file(name); }

  std::filesystem::path former = std::filesystem::current_path();
};

TEST_F(RelativePaths, BareNameIsLookedUpUnderTheFixedDataDirectory) {
  Touch("Bare.db");
  EXPECT_FALSE(DatabaseFileExists("Bare.db"));
  // Here the fixed text is but the beginning of a file name.
  Touch("c:\\ProgramData\\Corvo\\Telemetry\\Data\\Bare.db");
  EXPECT_TRUE(DatabaseFileExists("Bare.db"));
}

TEST_F(RelativePaths, PathWithADirectoryPartIsUsedAsItStands) {
  std::filesystem::create_directory("sub");
  Touch("sub/x.db");
  EXPECT_TRUE(DatabaseFileExists("sub/x.db"));
  EXPECT_TRUE(DatabaseFileExists("./sub/x.db"));
  EXPECT_FALSE(DatabaseFileExists("sub/y.db"));
}

/// Expects that the question throws, naming operation, path and reason.
void ExpectUnanswerable(const std::string& path, std::errc reason) {
  try {
    static_cast<void>(DatabaseFileExists(path.c_str()));
    FAIL() << path << " was answered";
  } catch (const std::filesystem::filesystem_error& e) {
    EXPECT_EQ(e.code(), reason);
    EXPECT_EQ(e.path1(), path);
    EXPECT_THAT(e.what(), testing::HasSubstr("exists"));
  }
}

TEST_F(RelativePaths, NameThatIsTooLongCannotBeAnswered) {
  ExpectUnanswerable("./" + std::string(300, 'x'), std::errc::filename_too_long);
}

TEST_F(RelativePaths, LoopOfLinksCannotBeAnswered) {
  std::filesystem::create_symlink("loop.db", "loop.db");
  ExpectUnanswerable("./loop.db", std::errc::too_many_symbolic_link_levels);
}

}  // namespace
}  // namespace corvo::test
