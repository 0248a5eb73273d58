#include "host/platform/instance_lock.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/patterns.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using std::chrono::hours;
using std::chrono::seconds;
using test::ContainsPattern;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::ThrowsMessage;

const auto kNever = [] { return false; };

class OneRunAtATime : public testing::Test {
 protected:
  std::optional<InstanceLock> Take() { return InstanceLock::TryTake(folder_.Path(), holder_); }

  /// What an attempt says that can come to nothing.
  std::string Refusal() {
    try {
      return Take() ? "taken" : "held";
    } catch (const std::runtime_error& failure) {
      return failure.what();
    }
  }

  void Write(const std::string& file, const std::string& content) const {
    std::ofstream(folder_ / file, std::ios::binary) << content;
  }

  [[nodiscard]] std::string Content(const std::string& file) const {
    std::ostringstream text;
    text << std::ifstream(folder_ / file, std::ios::binary).rdbuf();
    return text.str();
  }

  test::TempDir folder_;
  fs::path file_ = folder_.Path() / InstanceLock::kFileName;
  std::string holder_;
};

TEST_F(OneRunAtATime, TheSecondIsToldWhoTheFirstIs) {
  const auto lock = Take();
  ASSERT_TRUE(lock);
  EXPECT_FALSE(Take());
  EXPECT_THAT(holder_, ContainsPattern("^process [1-9][0-9]*, since 20[0-9-]+ [0-9:]+ UTC$"));
}

TEST_F(OneRunAtATime, TheEndOfTheFirstLeavesNoFileAndLetsTheNextIn) {
  EXPECT_TRUE(Take());
  EXPECT_FALSE(fs::exists(file_));
  EXPECT_TRUE(Take());
}

TEST_F(OneRunAtATime, AMovedLockIsOneLock) {
  auto lock = Take();
  const std::optional<InstanceLock> moved = std::move(lock);
  lock.reset();
  EXPECT_FALSE(Take());
}

TEST_F(OneRunAtATime, DirectoriesDoNotShareIt) {
  const test::TempDir other;
  const auto lock = Take();
  EXPECT_TRUE(InstanceLock::TryTake(other.Path(), holder_));
}

TEST_F(OneRunAtATime, AFileThatAKilledRunLeftIsTakenOver) {
  Write(InstanceLock::kFileName, "process 4711, since 2001-01-01 00:00:00 UTC\nand a longer text than a new one's\n");
  const auto lock = Take();
  ASSERT_TRUE(lock);
  EXPECT_FALSE(Take());
  EXPECT_THAT(holder_, AllOf(StartsWith("process "), Not(HasSubstr("2001"))));
}

TEST_F(OneRunAtATime, TheHolderIsKnownWithoutAnAttempt) {
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), "");
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
  {
    const auto lock = Take();
    EXPECT_THAT(InstanceLock::WhoHolds(folder_.Path()), ContainsPattern("^process [0-9]+, since .* UTC$"));
  }
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), "");
}

TEST_F(OneRunAtATime, AFileThatAKilledRunLeftHasNoHolder) {
  std::ofstream(folder_.Path() / InstanceLock::kFileName) << "process 999999999, since 2024-05-01 10:00:00 UTC\n";
  EXPECT_EQ(InstanceLock::WhoHolds(folder_.Path()), "");
}

TEST_F(OneRunAtATime, ThreadsExcludeEachOther) {
  std::atomic<int> holders = 0;
  std::atomic<int> most = 0;
  std::atomic<int> taken = 0;
  const auto compete = [&] {
    for (int round = 0; round < 50; ++round) {
      std::string holder;
      if (const auto lock = InstanceLock::TryTake(folder_.Path(), holder)) {
        most = std::max(most.load(), ++holders);
        ++taken;
        std::this_thread::yield();
        --holders;
      }
    }
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back(compete);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(most, 1);
  EXPECT_GT(taken, 0);
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(OneRunAtATime, ADirectoryThatIsMissingIsNamed) {
  const fs::path missing = folder_.Path() / "missing";
  EXPECT_THAT([&] { static_cast<void>(InstanceLock::TryTake(missing, holder_)); },
              ThrowsMessage<std::runtime_error>(HasSubstr("missing")));
}

TEST_F(OneRunAtATime, AHardLinkToAFileIsRefusedAndTheFileIsKept) {
  Write("letter", "dear");
  fs::create_hard_link(folder_ / "letter", file_);
  EXPECT_THAT(Refusal(), HasSubstr("corvo-telemetry-host.lock: it is a hard link"));
  EXPECT_EQ(Content("letter"), "dear");
}

TEST_F(OneRunAtATime, ADirectoryInItsPlaceIsRefused) {
  fs::create_directory(file_);
  EXPECT_THAT(Refusal(), HasSubstr("corvo-telemetry-host.lock: "));
  EXPECT_TRUE(fs::is_directory(file_));
}

TEST_F(OneRunAtATime, AWaitMayBeOverAtOnce) {
  const auto lock = Take();
  EXPECT_FALSE(InstanceLock::Wait(folder_.Path(), seconds(0), kNever, holder_));
  EXPECT_THAT(holder_, HasSubstr("process "));
}

TEST_F(OneRunAtATime, AWaitIsOverAfterItsTime) {
  const auto lock = Take();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(InstanceLock::Wait(folder_.Path(), std::chrono::milliseconds(150), kNever, holder_));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(150));
}

TEST_F(OneRunAtATime, AWaitCanBeStopped) {
  const auto lock = Take();
  EXPECT_FALSE(InstanceLock::Wait(
      folder_.Path(), hours(1), [] { return true; }, holder_));
}

TEST_F(OneRunAtATime, AWaitEndsWithTheLockWhenTheHolderEnds) {
  auto lock = Take();
  const auto release = [&lock] {
    lock.reset();
    return false;
  };
  EXPECT_TRUE(InstanceLock::Wait(folder_.Path(), hours(1), release, holder_));
}

TEST_F(OneRunAtATime, AFreeLockIsTakenWithoutAsking) {
  EXPECT_TRUE(InstanceLock::Wait(
      folder_.Path(), seconds(0), [] { return true; }, holder_));
}

}  // namespace
}  // namespace corvo::telemetry::host
