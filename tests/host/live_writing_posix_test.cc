#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <thread>

#include "host/run_fixture.h"
#include "host/samples/live_writing.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;
using testing::HasSubstr;

class LiveWritingOnPosix : public RunTest {
 protected:
  void SetUp() override { Generate("0.001"); }

  [[nodiscard]] HostRun WriteAndSend(const std::string& signal, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"generate", "--data-dir", data_, "--live", "600"};
    words.insert(words.end(), more.begin(), more.end());
    return RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", signal, "2"}, words);
  }
};

TEST_F(LiveWritingOnPosix, StopsAtOnceWhenItIsTerminatedAndSaysWhatWasWritten) {
  const auto start = steady_clock::now();
  const HostRun run = WriteAndSend("TERM");
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_EQ(run.exit_code, 143);
  EXPECT_THAT(run.out, HasSubstr("Interrupted: wrote "));
  EXPECT_EQ(Database(File("Cache.db")).Query("PRAGMA quick_check").at(0).at(0), "ok");
}

TEST_F(LiveWritingOnPosix, WritesItsDocumentAlsoAfterCtrlC) {
  const HostRun run = WriteAndSend("INT", {"--json"});
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_GT(run.Json()["live"]["rows"], 0);
}

TEST_F(LiveWritingOnPosix, StopsWhileItWaitsForLocks) {
  Database holder(File("Cache.db"));
  holder.Run("BEGIN EXCLUSIVE");
  EXPECT_EQ(WriteAndSend("TERM").exit_code, 143);
}

TEST_F(LiveWritingOnPosix, FindsAFileThatIsReplacedAndMissesOneThatIsRemoved) {
  const auto catalogue = telemetry::host::ReadCatalogue();
  auto result = std::async(std::launch::async, [&] {
    return telemetry::host::WriteLive(catalogue, {.directory = data_, .seconds = 3, .rate = 300});
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  fs::remove(File("HealthLog.db"));
  const std::string fresh = folder_ / "fresh.db";
  Database(File("Cache.db")).Run("VACUUM INTO '" + fresh + "'");
  const std::int64_t before = Database(fresh).Count("CollectorCache");
  fs::rename(fresh, File("Cache.db"));
  EXPECT_TRUE(result.get().problems.empty());
  EXPECT_FALSE(fs::exists(File("HealthLog.db")));
  EXPECT_GT(Database(File("Cache.db")).Count("CollectorCache"), before);
}

TEST_F(LiveWritingOnPosix, WritesThroughNoLink) {
  fs::rename(File("Cache.db"), folder_ / "real.db");
  fs::create_symlink(folder_ / "real.db", File("Cache.db"));
  const std::int64_t before = Database(folder_ / "real.db").Count("CollectorCache");
  const HostRun run = RunHost({"generate", "--data-dir", data_, "--live", "1"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Nothing more was written to Cache: "));
  EXPECT_EQ(Database(folder_ / "real.db").Count("CollectorCache"), before);
}

}  // namespace
}  // namespace corvo::test
