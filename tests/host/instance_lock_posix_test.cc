#include <fcntl.h>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>

#include "host/platform/instance_lock.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr uid_t kNobody = 65'534;

/// A process that holds the lock until it is told to end, or killed.
class OtherRun {
 public:
  explicit OtherRun(const fs::path& directory) {
    std::array<int, 2> taken{};
    std::array<int, 2> end{};
    EXPECT_TRUE(pipe2(taken.data(), O_CLOEXEC) == 0 && pipe2(end.data(), O_CLOEXEC) == 0);
    process_ = fork();
    if (process_ == 0) {
      close(end[1]);
      Hold(directory, taken[1], end[0]);
    }
    close(taken[1]);
    close(end[0]);
    end_ = end[1];
    char byte = 0;
    EXPECT_EQ(read(taken[0], &byte, 1), 1);
    close(taken[0]);
  }
  OtherRun(const OtherRun&) = delete;
  OtherRun& operator=(const OtherRun&) = delete;
  ~OtherRun() { End(); }

  [[nodiscard]] std::string Name() const { return "process " + std::to_string(process_) + ", "; }

  void Kill() {
    kill(process_, SIGKILL);
    End();
  }

  void End() {
    if (process_ != 0) {
      close(end_);
      waitpid(process_, nullptr, 0);
      process_ = 0;
    }
  }

 private:
  [[noreturn]] static void Hold(const fs::path& directory, int taken, int end) {
    {
      std::string holder;
      const auto lock = InstanceLock::TryTake(directory, holder);
      char byte = 0;
      static_cast<void>(lock && write(taken, "x", 1) == 1 && read(end, &byte, 1) == 0);
    }
    _exit(0);
  }

  pid_t process_ = 0;
  int end_ = -1;
};

class OneProcessAtATime : public testing::Test {
 protected:
  std::optional<InstanceLock> Take() { return InstanceLock::TryTake(folder_.Path(), holder_); }

  std::string Refusal() {
    try {
      return Take() ? "taken" : "held";
    } catch (const std::runtime_error& failure) {
      return failure.what();
    }
  }

  test::TempDir folder_;
  fs::path file_ = folder_.Path() / InstanceLock::kFileName;
  std::string holder_;
};

TEST_F(OneProcessAtATime, TheOtherProcessIsNamed) {
  const OtherRun other(folder_.Path());
  EXPECT_FALSE(Take());
  EXPECT_THAT(holder_, StartsWith(other.Name()));
}

TEST_F(OneProcessAtATime, AKilledHolderHoldsNothing) {
  OtherRun other(folder_.Path());
  other.Kill();
  EXPECT_TRUE(fs::exists(file_));
  EXPECT_TRUE(Take());
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(OneProcessAtATime, AWaitEndsWithTheLockWhenTheOtherProcessEnds) {
  OtherRun other(folder_.Path());
  const auto end_other = [&other] {
    other.End();
    return false;
  };
  EXPECT_TRUE(InstanceLock::Wait(folder_.Path(), std::chrono::hours(1), end_other, holder_));
}

TEST_F(OneProcessAtATime, TheSignatureOfADeadProcessIsNotTold) {
  const auto lock = Take();
  std::ofstream(file_) << "process 2147483646, since 2001-01-01 00:00:00 UTC\n";
  EXPECT_FALSE(Take());
  EXPECT_EQ(holder_, "another process");
}

TEST_F(OneProcessAtATime, NobodyElseMayOpenTheFile) {
  const auto lock = Take();
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(OneProcessAtATime, ProgramsThatAreStartedDoNotInheritIt) {
  const auto lock = Take();
  EXPECT_EQ(std::system(("! ls -l /proc/self/fd | grep -q " + folder_.Path().string()).c_str()), 0);
}

TEST_F(OneProcessAtATime, ALockWhoseFileWasReplacedRemovesNobodyElses) {
  auto first = Take();
  fs::remove(file_);
  const auto second = Take();
  ASSERT_TRUE(second);
  first.reset();
  EXPECT_TRUE(fs::exists(file_));
  EXPECT_FALSE(Take());
}

TEST_F(OneProcessAtATime, ASymbolicLinkIsNotFollowed) {
  for (const char* target : {"kept", "/dev/null", "missing"}) {
    fs::create_symlink(target, file_);
    EXPECT_THAT(Refusal(), HasSubstr(file_.string() + ": it is a symbolic link"));
    fs::remove(file_);
  }
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
}

TEST_F(OneProcessAtATime, APipeIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_THAT(Refusal(), HasSubstr(file_.string() + ": it is no regular file"));
  EXPECT_TRUE(fs::is_fifo(file_));
}

/// Runs of two users: root, and nobody, who may write the directory.
class RunsOfTwoUsers : public OneProcessAtATime {
 protected:
  void SetUp() override {
    if (geteuid() != 0) {
      GTEST_SKIP() << "only root can be two users";
    }
    fs::permissions(folder_.Path(), fs::perms::all);
  }
  ~RunsOfTwoUsers() override { static_cast<void>(seteuid(0)); }
};

TEST_F(RunsOfTwoUsers, RootNamesTheProcessOfTheOther) {
  ASSERT_EQ(seteuid(kNobody), 0);
  const OtherRun other(folder_.Path());
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_FALSE(Take());
  EXPECT_THAT(holder_, StartsWith("process "));
  EXPECT_THAT(holder_, EndsWith(" of another user (uid 65534)"));
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), holder_);
}

TEST_F(RunsOfTwoUsers, RootTakesOverWhatAKilledRunOfTheOtherLeft) {
  ASSERT_EQ(seteuid(kNobody), 0);
  OtherRun other(folder_.Path());
  other.Kill();
  ASSERT_EQ(seteuid(0), 0);
  const auto size = fs::file_size(file_);
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), "");
  {
    const auto lock = Take();
    ASSERT_TRUE(lock);
    EXPECT_EQ(fs::file_size(file_), size) << "nothing is written to another user's file";
  }
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(RunsOfTwoUsers, ARunOfRootKeepsTheOtherAway) {
  const OtherRun other(folder_.Path());
  ASSERT_EQ(seteuid(kNobody), 0);
  EXPECT_FALSE(Take());
  EXPECT_EQ(holder_, "a run of another user (uid 0), unless it was killed: then remove " + file_.string());
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), holder_);
}

TEST_F(RunsOfTwoUsers, WhatTheOtherWroteIsNotRepeated) {
  std::ofstream(file_) << "process " << getpid() << " \x1b[31m\n";
  ASSERT_EQ(chown(file_.c_str(), kNobody, kNobody), 0);
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), fmt::format("process {} of another user (uid 65534)", getpid()));
}

TEST_F(OneProcessAtATime, ADirectoryThatCannotBeWrittenIsTold) {
  fs::permissions(folder_.Path(), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_exec);
  const bool dropped = geteuid() == 0 && seteuid(kNobody) == 0;
  const std::string refusal = Refusal();
  if (dropped) {
    ASSERT_EQ(seteuid(0), 0);
  }
  EXPECT_THAT(refusal, HasSubstr(file_.string() + ": Permission denied"));
}

}  // namespace
}  // namespace corvo::telemetry::host
