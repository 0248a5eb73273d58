#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "host/show/standard_output.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

/// Prints to a file or device in a process that ends with the reason why output was lost, 0 when none was.
[[noreturn]] void PrintTo(const char* file, int access, const std::string& text) {
  dup2(open(file, access), STDOUT_FILENO);
  Print(text);
  Print("more");
  const bool lost = OutputLost();
  _exit(lost ? errno : 0);
}

/// Exit code of a line of the shell, in which `$host` is the program.
int Shell(const std::string& line) {
  const int status = std::system(("host='" CORVO_HOST_PROGRAM "'; " + line).c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Print, ToAStreamThatTakesItLosesNothing) {
  EXPECT_EXIT(PrintTo("/dev/null", O_WRONLY, "text"), testing::ExitedWithCode(0), "");
}

TEST(Print, RemembersTheFirstReasonOfALoss) {
  EXPECT_EXIT(PrintTo("/dev/full", O_WRONLY, "text"), testing::ExitedWithCode(ENOSPC), "");
  EXPECT_EXIT(PrintTo("/dev/full", O_WRONLY, std::string(1'000'000, 'x')), testing::ExitedWithCode(ENOSPC), "");
  EXPECT_EXIT(PrintTo("/dev/null", O_RDONLY, "text"), testing::ExitedWithCode(EBADF), "");
}

TEST(StandardOutput, ThatIsClosedOrBeyondTheSizeLimitIsToldByTheExitCode) {
  const test::TempDir folder;
  const std::string file = "'" + folder / "out" + "'";
  EXPECT_EQ(Shell("\"$host\" contracts >" + file), 0);
  EXPECT_EQ(Shell("\"$host\" contracts >&- 2>&-"), 1);
  EXPECT_EQ(Shell("\"$host\" contracts <&- >&- 2>&-"), 1);
  std::filesystem::resize_file(folder / "out", 4'000'000);
  EXPECT_EQ(Shell("ulimit -f 2000; \"$host\" contracts >>" + file + " 2>/dev/null"), 1);
}

}  // namespace
}  // namespace corvo::telemetry::host
