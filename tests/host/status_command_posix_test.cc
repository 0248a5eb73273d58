#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

/// What is known of a file that must stay as it is.
struct Traces {
  std::string content;
  std::int64_t seconds;
  std::int64_t nanoseconds;

  bool operator==(const Traces&) const = default;
};

std::map<std::string, Traces> TracesIn(const std::string& folder) {
  std::map<std::string, Traces> traces;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    struct stat status {};
    EXPECT_EQ(stat(entry.path().c_str(), &status), 0);
    std::ifstream file(entry.path(), std::ios::binary);
    traces[entry.path().filename()] = {
        {std::istreambuf_iterator<char>(file), {}}, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  }
  return traces;
}

class StatusLeaves : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  void ExpectNoTrace(const std::vector<std::string>& through = {}) {
    const auto before = TracesIn(data_);
    const HostRun run = RunHostThrough(through, {"status", "--data-dir", data_, "--all"});
    EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
    EXPECT_THAT(run.out, Not(HasSubstr("cannot be read")));
    EXPECT_TRUE(TracesIn(data_) == before);
  }
};

TEST_F(StatusLeaves, EveryFileAsItIs) { ExpectNoTrace(); }

TEST_F(StatusLeaves, NoLogBesideADatabaseThatHasNone) {
  Database(File("Cache.db")).Run("PRAGMA journal_mode=WAL");
  ASSERT_FALSE(fs::exists(File("Cache.db-wal")));
  ExpectNoTrace();
}

TEST_F(StatusLeaves, ADirectoryThatMustNotBeWrittenAsItIs) {
  Database(File("Cache.db")).Run("PRAGMA journal_mode=WAL");
  for (const fs::directory_entry& entry : fs::directory_iterator(data_)) {
    ASSERT_EQ(chmod(entry.path().c_str(), 0444), 0);
  }
  ASSERT_EQ(chmod(data_.c_str(), 0555), 0);
  if (geteuid() == 0) {
    ExpectNoTrace({"setpriv", "--bounding-set", "-dac_override,-dac_read_search", "--"});
  } else {
    ExpectNoTrace();
  }
  ASSERT_EQ(chmod(data_.c_str(), 0755), 0);
}

TEST_F(StatusLeaves, ADatabaseAndItsLogAsTheyAreWhileACollectorHasThemOpen) {
  Database collector(File("Cache.db"));
  collector.Run("PRAGMA journal_mode=WAL; UPDATE CollectorCache SET time = time WHERE rowid = 1");
  auto before = TracesIn(data_);
  EXPECT_EQ(RunHost({"status", "--data-dir", data_}).exit_code, 0);
  auto after = TracesIn(data_);
  before.erase("Cache.db-shm");  // where readers leave their marks
  after.erase("Cache.db-shm");
  EXPECT_TRUE(before == after);
}

TEST_F(StatusLeaves, BlocksToTerminalsThatShowThem) {
  const HostRun with = RunHostOnTerminal({"status", "--data-dir", data_}, {"TERM=xterm", "LC_ALL=C.UTF-8"});
  EXPECT_THAT(with.out, HasSubstr("\u2588"));
  const HostRun without = RunHostOnTerminal({"status", "--data-dir", data_}, {"TERM=dumb", "LC_ALL=C.UTF-8"});
  EXPECT_THAT(without.out, Not(HasSubstr("\u2588")));
  EXPECT_THAT(without.out, HasSubstr("###"));
}

}  // namespace
}  // namespace corvo::test
