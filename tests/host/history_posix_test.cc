#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "host/facts/record/history.h"
#include "support/temp_dir.h"
#include "support/unprivileged_posix.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::SizeIs;

class HistoryFile : public testing::Test {
 protected:
  void Add() const { AddToHistory(folder_.Path(), {.start = 1}); }

  [[nodiscard]] std::string Refusal() const {
    std::string to_read = "read";
    std::string to_write = "written";
    try {
      static_cast<void>(ReadHistory(folder_.Path()));
    } catch (const std::runtime_error& failure) {
      to_read = failure.what();
    }
    try {
      Add();
    } catch (const std::runtime_error& failure) {
      to_write = failure.what();
    }
    EXPECT_EQ(to_read, to_write);
    return to_write;
  }

  [[nodiscard]] std::ptrdiff_t Files() const { return std::distance(fs::directory_iterator(folder_.Path()), {}); }

  test::TempDir folder_;
  const fs::path file_ = folder_.Path() / kHistoryFile;
};

TEST_F(HistoryFile, IsForItsOwnerAlone) {
  const mode_t former = umask(0);
  Add();
  umask(former);
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(HistoryFile, GrowsByALineAndIsWrittenAnewOnlyWhenItHoldsAQuarterMoreThanIsKept) {
  Add();
  const auto file_number = [this] {
    struct stat status {};
    EXPECT_EQ(stat(file_.c_str(), &status), 0);
    return status.st_ino;
  };
  const ino_t first = file_number();
  const std::uintmax_t line = fs::file_size(file_);
  for (int run = 1; run < 250; ++run) {
    Add();
  }
  EXPECT_EQ(file_number(), first);
  EXPECT_EQ(fs::file_size(file_), 250 * line);
  EXPECT_THAT(ReadHistory(folder_.Path()), SizeIs(kMostRuns));
  Add();
  EXPECT_NE(file_number(), first);
  EXPECT_EQ(fs::file_size(file_), 200 * line);
}

TEST_F(HistoryFile, IsWrittenAnewWhereOthersMayRead) {
  Add();
  ASSERT_EQ(chmod(file_.c_str(), 0644), 0);
  Add();
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_THAT(ReadHistory(folder_.Path()), SizeIs(2));
}

TEST_F(HistoryFile, IsNeverASymbolicLink) {
  const fs::path target = folder_.Path() / "kept";
  std::ofstream(target) << "theirs";
  for (const fs::path& place : {target, fs::path("/dev/null"), fs::path("missing")}) {
    fs::create_symlink(place, file_);
    EXPECT_EQ(Refusal(), file_.string() + ": it is a symbolic link; remove it");
    EXPECT_EQ(fs::read_symlink(file_), place);
    fs::remove(file_);
  }
  EXPECT_EQ(fs::file_size(target), 6u);
  EXPECT_EQ(Files(), 1);
}

TEST_F(HistoryFile, IsNeverAPipeThatIsWaitedFor) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(Refusal(), file_.string() + ": it is no regular file; remove it");
  EXPECT_TRUE(fs::is_fifo(file_));
}

TEST_F(HistoryFile, IsNeverAnotherUsers) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can give a file away";
  }
  std::ofstream(file_) << "theirs";
  ASSERT_EQ(chown(file_.c_str(), 4711, 4711), 0);
  EXPECT_EQ(Refusal(), file_.string() + ": it belongs to another user (uid 4711); remove it");
  EXPECT_EQ(fs::file_size(file_), 6u);
}

TEST_F(HistoryFile, OfRootIsToldApartFromOneWithoutPermission) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can be two users";
  }
  Add();
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  ASSERT_EQ(seteuid(4711), 0);
  const std::string refusal = Refusal();
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(refusal, file_.string() + ": it belongs to another user (uid 0); remove it");
}

TEST_F(HistoryFile, StaysAsItWasWhereNothingMayBeWritten) {
  Add();
  ASSERT_EQ(chmod(file_.c_str(), 0644), 0);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
  {
    const test::Unprivileged user;
    EXPECT_THAT(ReadHistory(folder_.Path()), SizeIs(1));
    EXPECT_THROW(Add(), std::runtime_error);
    EXPECT_THAT(ReadHistory(folder_.Path()), SizeIs(1));
  }
  chmod(folder_.Path().c_str(), 0755);
}

/// No file may grow beyond some bytes, as on a disk that is full after them.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit small{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &former_);
    static_cast<void>(std::signal(SIGXFSZ, handler_));
  }

 private:
  rlimit former_{};
  void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(HistoryFile, StaysAsItWasOnAFullDiskAndNothingIsLeftBesideIt) {
  Add();
  std::string failure;
  {
    const FullDisk disk(100);
    try {
      Add();
    } catch (const std::runtime_error& error) {
      failure = error.what();
    }
  }
  EXPECT_THAT(failure, HasSubstr(file_.string() + ": File too large"));
  EXPECT_THAT(ReadHistory(folder_.Path()), SizeIs(1));
  EXPECT_EQ(Files(), 1);
}

}  // namespace
}  // namespace corvo::telemetry::host
