// Where the log goes on POSIX: pipes, devices, links, and places that take nothing.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "host/run_fixture.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class LogPlace : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  /// A run that is ended when it waits for something.
  [[nodiscard]] HostRun LogTo(const std::string& file, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"run", "--data-dir", data_, "--log-file", file};
    words.insert(words.end(), more.begin(), more.end());
    return RunHostThrough({"timeout", "--foreground", "--signal", "KILL", "60"}, words);
  }

  void ExpectRefusal(const std::string& file, const char* reason) const {
    const HostRun run = LogTo(file);
    EXPECT_EQ(run.exit_code, 2) << file;
    EXPECT_THAT(run.err, HasSubstr(reason));
  }

  static std::string Content(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }

  std::string log_ = folder_ / "run.log";
};

TEST_F(LogPlace, IsNoPipeWhetherOrNotSomebodyReads) {
  ASSERT_EQ(mkfifo(log_.c_str(), 0600), 0);
  ExpectRefusal(log_, "it is no ordinary file");
  const int reader = open(log_.c_str(), O_RDONLY | O_NONBLOCK);
  ExpectRefusal(log_, "it is no ordinary file");
  close(reader);
}

TEST_F(LogPlace, IsNoDeviceThatTakesNothingOrGivesSomething) {
  ExpectRefusal("/dev/full", "it is no ordinary file");
  ExpectRefusal("/dev/zero", "it is no ordinary file");
}

TEST_F(LogPlace, MayBeTheNullDevice) { EXPECT_EQ(LogTo("/dev/null", {"--log-level", "debug"}).exit_code, 0); }

TEST_F(LogPlace, MayBeATerminal) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(grantpt(terminal) + unlockpt(terminal), 0);
  const std::string name = ptsname(terminal);
  const int kept = open(name.c_str(), O_RDWR | O_NOCTTY);
  EXPECT_EQ(LogTo(name, {"--database", "Cache", "--log-level", "info"}).exit_code, 0);
  std::string text(4096, '\0');
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(read(terminal, text.data(), text.size()), 0)));
  EXPECT_THAT(text, HasSubstr("Started DataCleanup::ReadSource"));
  close(kept);
  close(terminal);
}

TEST_F(LogPlace, IsNoLinkWhereverItLeads) {
  for (const fs::path& target : {File("Cache.db"), File(".corvo-telemetry-host.history"), folder_.Path() / "nowhere"}) {
    fs::create_symlink(target, log_);
    ExpectRefusal(log_, "it is a link");
    fs::remove(log_);
  }
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(LogPlace, IsNoneInTheDataDirectoryByAnotherWayEither) {
  fs::create_directory_symlink(data_, folder_ / "other");
  ExpectRefusal(folder_ / "other/DeviceUsage.db", "the name belongs to a database or to this program");
}

TEST_F(LogPlace, IsNoOtherNameOfAFileThatIsTaken) {
  ASSERT_EQ(Run().exit_code, 0);
  const std::string before = Content(File(".corvo-telemetry-host.history"));
  fs::create_hard_link(File(".corvo-telemetry-host.history"), log_);
  ExpectRefusal(log_, "the name belongs to a database or to this program");
  EXPECT_EQ(Content(log_), before);
}

TEST_F(LogPlace, MayHaveAnotherName) {
  std::ofstream(folder_ / "other").flush();
  fs::create_hard_link(folder_ / "other", log_);
  EXPECT_EQ(LogTo(log_).exit_code, 0);
  EXPECT_THAT(Content(folder_ / "other"), HasSubstr("no such table: "));
}

std::vector<std::string> Shell(const std::string& command) { return {"sh", "-c", command}; }

class WithoutACurrentDirectory : public RunTest {
 protected:
  [[nodiscard]] HostRun RunThere(const std::vector<std::string>& words) const {
    return RunHostThrough(
        Shell("cd '" + folder_.Path().string() + "' && mkdir gone && cd gone && rmdir ../gone && exec \"$0\" \"$@\""),
        words);
  }
};

TEST_F(WithoutACurrentDirectory, APageAndALogAskForAFullName) {
  Generate();
  const HostRun page = RunThere({"report", "--data-dir", data_, "--html", "x.html"});
  EXPECT_EQ(page.exit_code, 2);
  EXPECT_THAT(page.err, HasSubstr("--html x.html: there is no current directory; name the file from the root on"));
  const HostRun log = RunThere({"run", "--data-dir", data_, "--log-file", "run.log"});
  EXPECT_EQ(log.exit_code, 2);
  EXPECT_THAT(log.err, HasSubstr("--log-file run.log: there is no current directory"));
}

class LostLog : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  [[nodiscard]] HostRun RunWith(const std::string& shell, const std::vector<std::string>& more) const {
    std::vector<std::string> words = {"run", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHostThrough(Shell(shell), words);
  }
};

TEST_F(LostLog, OnStandardErrorIsNoSuccess) {
  const HostRun run = RunWith("exec \"$0\" \"$@\" 2>/dev/full", {"--log-level", "debug"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 5 databases"));
}

TEST_F(LostLog, IsNoneWhereNothingWasToBeLogged) {
  EXPECT_EQ(RunWith("exec \"$0\" \"$@\" 2>/dev/full", {}).exit_code, 0);
}

TEST_F(LostLog, OfAFileIsToldOnce) {
  const std::string log = folder_ / "run.log";
  std::ofstream(log).flush();
  fs::resize_file(log, 4'900'000);
  // Enough for these databases, in units of 512 bytes or 1 kB.
  const HostRun run = RunWith("ulimit -f 4000; exec \"$0\" \"$@\"", {"--log-file", log});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 5 databases"));
  EXPECT_EQ(run.err, "corvo-telemetry-host: cannot write the log: File too large\n");
}

}  // namespace
}  // namespace corvo::test
