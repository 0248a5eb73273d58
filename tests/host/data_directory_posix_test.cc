#include <gmock/gmock.h>

#include "host/facts/data_directory.h"
#include "host/host_process.h"
#include "support/temp_dir.h"
#include "support/unprivileged_posix.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::ResolveDataDirectory;
using testing::HasSubstr;

/// The problem of a directory as a user without privileges meets it.
std::string ProblemForAnybody(const std::string& directory) {
  const Unprivileged unprivileged;
  return ResolveDataDirectory(directory).problem;
}

class ClosedDirectory : public testing::Test {
 protected:
  ClosedDirectory() {
    fs::create_directories(data_);
    fs::permissions(folder_.Path(), fs::perms(0755));
    fs::permissions(parent_, fs::perms(0755));
  }
  ~ClosedDirectory() override {
    fs::permissions(parent_, fs::perms(0755));
    fs::permissions(data_, fs::perms(0755));
  }

  TempDir folder_;
  const std::string parent_ = folder_ / "parent";
  const std::string data_ = folder_ / "parent/data";
};

TEST_F(ClosedDirectory, ThatCannotBeListedIsPermissionDenied) {
  fs::permissions(data_, fs::perms(0311));
  EXPECT_EQ(ProblemForAnybody(data_), "the data directory " + data_ + " cannot be read: permission denied at " + data_ +
                                          "; run as a user who may list and enter it");
}

TEST_F(ClosedDirectory, ThatCannotBeEnteredIsPermissionDenied) {
  fs::permissions(data_, fs::perms(0644));
  EXPECT_THAT(ProblemForAnybody(data_), HasSubstr("permission denied at " + data_ + ";"));
}

TEST_F(ClosedDirectory, BelowAClosedParentNamesTheParent) {
  fs::permissions(parent_, fs::perms(0600));
  EXPECT_THAT(ProblemForAnybody(data_), HasSubstr("permission denied at " + parent_ + ";"));
}

TEST_F(ClosedDirectory, ThatIsOpenHasNoProblem) {
  fs::permissions(data_, fs::perms(0755));
  EXPECT_EQ(ProblemForAnybody(data_), "");
}

TEST(LoopOfLinks, EndsTheRunBeforeItsPass) {
  const TempDir folder;
  fs::create_symlink("b", folder / "a");
  fs::create_symlink("a", folder / "b");
  const HostRun run = RunHost({"run", "--data-dir", folder / "a", "--json"});
  EXPECT_EQ(run.exit_code, 10);
  EXPECT_THAT(run.Json()["result"]["what"].get<std::string>(), HasSubstr("its symbolic links form a loop"));
}

TEST(LongName, OfADataDirectoryIsToldAsSuch) {
  const TempDir folder;
  EXPECT_THAT(ResolveDataDirectory(folder / std::string(300, 'x')).problem, HasSubstr("its name is too long"));
}

}  // namespace
}  // namespace corvo::test
