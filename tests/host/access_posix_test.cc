#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "host/platform/access.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

/// Where a file system is mounted that takes no writing; empty when none is.
std::string ReadOnlyMount() {
  std::ifstream mounts("/proc/self/mounts");
  std::string device;
  std::string place;
  std::string type;
  std::string options;
  std::string rest;
  while (mounts >> device >> place >> type >> options && std::getline(mounts, rest)) {
    if ((options + ",").starts_with("ro,") && access(place.c_str(), F_OK) == 0) {
      return place;
    }
  }
  return "";
}

TEST(ReadOnlyFileSystem, IsToldFromOneThatCanBeWritten) {
  const test::TempDir folder;
  EXPECT_FALSE(IsOnReadOnlyFileSystem(folder.Path()));
  EXPECT_FALSE(IsOnReadOnlyFileSystem(folder.Path() / "missing"));
  const std::string place = ReadOnlyMount();
  if (place.empty()) {
    GTEST_SKIP() << "no file system of this machine is mounted for reading only";
  }
  EXPECT_TRUE(IsOnReadOnlyFileSystem(place));
}

TEST(FileHandles, LackWhereADatabaseCouldNotHaveItsFilesOpen) {
  const auto with_at_most = [](rlim_t handles) {
    for (int handle = STDERR_FILENO + 1; handle < 100; ++handle) {
      close(handle);
    }
    const rlimit limit{handles, handles};
    setrlimit(RLIMIT_NOFILE, &limit);
    _exit(LacksFileHandles() ? 1 : 0);
  };
  EXPECT_EXIT(with_at_most(6), testing::ExitedWithCode(1), "");
  EXPECT_EXIT(with_at_most(7), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace corvo::telemetry::host
