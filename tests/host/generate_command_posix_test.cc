#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>

#include <fstream>

#include "host/cli/commands.h"
#include "host/host_process.h"
#include "support/database.h"
#include "support/temp_dir.h"
#include "support/unprivileged_posix.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::CommandFailure;
using testing::HasSubstr;

/// The largest file that this process may write while the object lives; writing beyond it fails as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : former_handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &former_);
    signal(SIGXFSZ, former_handler_);
  }

 private:
  rlimit former_{};
  void (*former_handler_)(int);
};

class GenerationWithoutRoom : public testing::Test {
 protected:
  /// Fits the first database, but not the second.
  std::string FailureOf(bool force) {
    const FileSizeLimit limit(20'000);
    try {
      telemetry::host::GenerateCommand({.data_dir = data_, .scale = 0.01, .now = "2024-05-01", .force = force});
    } catch (const CommandFailure& failure) {
      EXPECT_EQ(failure.Code(), telemetry::host::kPassFailed);
      return failure.what();
    }
    return "no failure";
  }

  TempDir folder_;
  const std::string data_ = folder_ / "parent/data";
};

TEST_F(GenerationWithoutRoom, LeavesNothingThatItMade) {
  EXPECT_THAT(FailureOf(false), HasSubstr("cannot write " + data_));
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
}

TEST_F(GenerationWithoutRoom, LosesNothingThatItWasToReplace) {
  fs::create_directories(data_);
  Database(fs::path(data_) / "Cache.db").Run("CREATE TABLE Old (a); INSERT INTO Old VALUES (1)");
  EXPECT_THAT(FailureOf(true), HasSubstr("held before is kept"));
  EXPECT_EQ(Database(fs::path(data_) / "Cache.db").Count("Old"), 1);
  EXPECT_EQ(std::distance(fs::directory_iterator(data_), {}), 1);
}

struct Closed {
  fs::perms permissions;
  const char* name;
  const char* answer;
};

class GenerateWithoutPermission : public testing::TestWithParam<Closed> {};

TEST_P(GenerateWithoutPermission, IsWrongUsageWithTheReason) {
  const TempDir folder;
  fs::permissions(folder.Path(), GetParam().permissions);
  const Unprivileged unprivileged;
  try {
    telemetry::host::GenerateCommand({.data_dir = folder / GetParam().name, .now = ""});
    FAIL() << "no failure";
  } catch (const CommandFailure& failure) {
    EXPECT_EQ(failure.Code(), telemetry::host::kUsage);
    EXPECT_THAT(failure.what(), HasSubstr(GetParam().answer));
  }
}

INSTANTIATE_TEST_SUITE_P(All, GenerateWithoutPermission,
                         testing::Values(Closed{fs::perms(0555), "", "cannot write to the directory"},
                                         Closed{fs::perms(0555), "new", "cannot make the directory"},
                                         Closed{fs::perms(0), "", "cannot be read: permission denied at"}));

class GenerateIntoStrangeNames : public testing::TestWithParam<const char*> {};

TEST_P(GenerateIntoStrangeNames, WritesToTheDirectoryOfThatPlainName) {
  const TempDir folder;
  const fs::path former = fs::current_path();
  fs::current_path(folder.Path());
  const HostRun run = RunHost({"generate", "--data-dir", GetParam(), "--scale", "0.01"});
  fs::current_path(former);
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(fs::is_regular_file(folder.Path() / GetParam() / "Cache.db"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
}

INSTANTIATE_TEST_SUITE_P(All, GenerateIntoStrangeNames,
                         testing::Values("file:x", "file:data?mode=ro", "file:x%20y", "a?b", "a#b", "%41"));

TEST(PlantedLink, UnderADatabasesNameIsNeverWrittenThrough) {
  const TempDir folder;
  std::ofstream(folder / "victim") << "kept";
  for (const char* name : {"Cache.db", "HealthLog.db-wal"}) {
    const TempDir data;
    fs::create_symlink(folder / "victim", data / name);
    EXPECT_EQ(RunHost({"generate", "--data-dir", data.Path().string()}).exit_code, 2);
    const HostRun run = RunHost({"generate", "--data-dir", data.Path().string(), "--force"});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_THAT(run.err, HasSubstr(data / name + " is a link"));
    EXPECT_TRUE(fs::is_symlink(data / name));
  }
  EXPECT_EQ(fs::file_size(folder / "victim"), 4U);
}

}  // namespace
}  // namespace corvo::test
