#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>

#include "host/platform/platform.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using test::SetEnvironment;
using test::TempDir;

bool RefusesOutput(int stream) { return write(stream, "x", 1) == -1 && errno == EBADF; }

TEST(PrepareProcess, LeavesNoStandardStreamToTheNextFile) {
  const auto without_streams = [] {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    PrepareProcess();
    return RefusesOutput(STDOUT_FILENO) && RefusesOutput(STDERR_FILENO) && open("/dev/null", O_RDONLY) > STDERR_FILENO;
  };
  EXPECT_EXIT(_exit(without_streams() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(PrepareProcess, LeavesOpenStreamsAsTheyAre) {
  const auto without_input = [] {
    close(STDIN_FILENO);
    PrepareProcess();
    return write(STDERR_FILENO, "still open", 10) == 10;
  };
  EXPECT_EXIT(_exit(without_input() ? 0 : 1), testing::ExitedWithCode(0), "still open");
}

TEST(PrepareProcess, MakesAReaderThatWentAwayAnError) {
  const auto without_reader = [] {
    PrepareProcess();
    std::array<int, 2> ends{};
    const bool piped = pipe(ends.data()) == 0 && close(ends[0]) == 0;
    return piped && write(ends[1], "x", 1) == -1 && errno == EPIPE;
  };
  EXPECT_EXIT(_exit(without_reader() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(TerminalWidth, FollowsTheTerminal) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  std::FILE* const stream = fdopen(terminal, "w");
  EXPECT_EQ(TerminalWidth(stream), 80);
  for (const std::uint16_t columns : {std::uint16_t{40}, std::uint16_t{132}}) {
    const winsize size{24, columns, 0, 0};
    ioctl(terminal, TIOCSWINSZ, &size);
    EXPECT_EQ(TerminalWidth(stream), columns);
  }
  std::fclose(stream);
}

TEST(TerminalWidth, OfAFileIsTheUsualOne) {
  std::FILE* const file = std::fopen("/dev/null", "w");
  EXPECT_EQ(TerminalWidth(file), 80);
  std::fclose(file);
}

class SqliteTemporaryFiles : public testing::Test {
 protected:
  SqliteTemporaryFiles() { Forget(); }
  ~SqliteTemporaryFiles() override { Forget(); }

  static void Forget() {
    SetEnvironment("SQLITE_TMPDIR", nullptr);
    SetEnvironment("TMPDIR", nullptr);
  }

  TempDir folder_;
  TempDir other_;
};

TEST_F(SqliteTemporaryFiles, GoWhereTheEnvironmentSaysElseWhereTheyOutliveAReboot) {
  EXPECT_EQ(SqliteTemporaryDirectory(), "/var/tmp");
  SetEnvironment("TMPDIR", other_.Path().c_str());
  EXPECT_EQ(SqliteTemporaryDirectory(), other_.Path());
  SetEnvironment("SQLITE_TMPDIR", folder_.Path().c_str());
  EXPECT_EQ(SqliteTemporaryDirectory(), folder_.Path());
}

TEST_F(SqliteTemporaryFiles, GoToNothingThatIsNoDirectory) {
  SetEnvironment("SQLITE_TMPDIR", (folder_ / "missing").c_str());
  SetEnvironment("TMPDIR", "/dev/null");
  EXPECT_EQ(SqliteTemporaryDirectory(), "/var/tmp");
}

}  // namespace
}  // namespace corvo::telemetry::host
