#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <thread>

#include "host/show/progress.h"
#include "host/show/standard_error.h"
#include "support/patterns.h"

namespace corvo::telemetry::host {
namespace {

using test::ContainsPattern;
using testing::ElementsAre;
using testing::HasSubstr;

/// A process whose standard error is a terminal of its own.
class OnItsTerminal {
 public:
  OnItsTerminal(std::uint16_t columns, const std::function<void()>& body) : terminal_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(terminal_);
    unlockpt(terminal_);
    Resize(columns);
    const int other_side = open(ptsname(terminal_), O_RDWR | O_NOCTTY);
    process_ = fork();
    if (process_ == 0) {
      dup2(other_side, STDERR_FILENO);
      close(other_side);
      body();
      _exit(0);
    }
    close(other_side);
  }
  OnItsTerminal(const OnItsTerminal&) = delete;
  OnItsTerminal& operator=(const OnItsTerminal&) = delete;
  ~OnItsTerminal() {
    close(terminal_);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  void Resize(std::uint16_t columns) const {
    const winsize size{24, columns, 0, 0};
    ioctl(terminal_, TIOCSWINSZ, &size);
  }

  /// Everything that appears until `enough` is content or the process has ended.
  [[nodiscard]] std::string Read(const std::function<bool(const std::string&)>& enough) const {
    std::string text;
    std::array<char, 4096> part{};
    ssize_t got = 1;
    while (!enough(text) && (got = read(terminal_, part.data(), part.size())) > 0) {
      text.append(part.data(), static_cast<std::size_t>(got));
    }
    return text;
  }

  [[nodiscard]] std::string ReadAll() const {
    return Read([](const std::string&) { return false; });
  }

 private:
  int terminal_;
  pid_t process_ = 0;
};

/// What a person then sees: the rows of a terminal that begins a new one when a row is full, without blanks at the end.
std::vector<std::string> Screen(const std::string& text, std::size_t columns) {
  std::vector<std::string> rows(1);
  std::size_t column = 0;
  for (const char byte : text) {
    if (byte == '\n' || (byte != '\r' && column == columns)) {
      rows.emplace_back();
    }
    if (byte == '\r' || column == columns) {
      column = 0;
    }
    if (byte != '\r' && byte != '\n') {
      rows.back().resize(std::max(rows.back().size(), column + 1), ' ');
      rows.back()[column++] = byte;
    }
  }
  for (std::string& row : rows) {
    row.erase(row.find_last_not_of(' ') + 1);
  }
  return rows;
}

void Work() {
  ShowProgress({"HealthLog", "deleting rows that are past their retention", 0.1});
  Tell("one");
  ShowProgress({"HealthLog", "compacting", 0.5});
  ShowProgress({"State", "counting", -1});
  Tell("two");
  ShowProgress({"State", "x", 1});
  EndProgress();
}

class Progress : public testing::TestWithParam<std::uint16_t> {};

TEST_P(Progress, LeavesNothingBehind) {
  const std::string text = OnItsTerminal(GetParam(), Work).ReadAll();
  EXPECT_THAT(text, ContainsPattern("\r[^\r\n]*(5|%)"));
  EXPECT_THAT(Screen(text, GetParam()), ElementsAre("corvo-telemetry-host: one", "corvo-telemetry-host: two", ""));
}

INSTANTIATE_TEST_SUITE_P(Columns, Progress, testing::Values(30, 40, 80, 200));

TEST(ProgressOfALongStep, KeepsItsTimeGoing) {
  const OnItsTerminal process(80, [] {
    ShowProgress({"HealthLog", "compacting"});
    pause();
  });
  const std::string text = process.Read([](const std::string& seen) { return seen.find("0:01") != seen.npos; });
  EXPECT_THAT(text, HasSubstr("\rHealthLog: compacting  0:00"));
  EXPECT_THAT(text, HasSubstr("\rHealthLog: compacting  0:01"));
}

TEST(ProgressOfALongStep, TellsTheTimeOfTheStepWhichGoesOnByItself) {
  const OnItsTerminal process(80, [] {
    const auto begun = std::chrono::steady_clock::now() - std::chrono::seconds(12);
    ShowProgress({.database = "HealthLog", .step = "compacting", .since = begun});
    pause();
  });
  const std::string later = "\rHealthLog: compacting, 13 s  0:0";
  EXPECT_THAT(process.Read([&](const std::string& seen) { return seen.find(later) != seen.npos; }), HasSubstr(later));
}

TEST(ProgressOfALongStep, FollowsTheWidthOfTheTerminal) {
  const OnItsTerminal process(80, [] {
    ShowProgress({"HealthLog", "deleting rows that are past their retention"});
    pause();
  });
  const std::string wide = "\rHealthLog: deleting rows that are past their retention  0:00";
  static_cast<void>(process.Read([&](const std::string& seen) { return seen.find(wide) != seen.npos; }));
  process.Resize(40);
  const std::string narrow = "\rHealthLog: deleting rows that are  0:0";
  EXPECT_THAT(process.Read([&](const std::string& seen) { return seen.find(narrow) != seen.npos; }), HasSubstr(narrow));
}

TEST(ProgressOfALongStep, LeavesNothingBehindWhenTheTerminalWritesIntoIt) {
  const std::string text = OnItsTerminal(40, [] {
                             ShowProgress({"HealthLog", "compacting"});
                             std::fputs("^C", stderr);
                             EndProgress();
                           }).ReadAll();
  EXPECT_THAT(Screen(text, 40), ElementsAre(""));
}

TEST(ProgressOfALongStep, ComesBackAfterAMessage) {
  const OnItsTerminal process(80, [] {
    ShowProgress({"HealthLog", "compacting"});
    Tell("something");
    pause();
  });
  const auto is_back = [](const std::string& seen) {
    const std::size_t message = seen.find("something");
    return message != seen.npos && seen.find("\rHealthLog", message) != seen.npos;
  };
  EXPECT_TRUE(is_back(process.Read(is_back)));
}

TEST(ProgressOfThreads, MixesWithNothing) {
  const std::string text = OnItsTerminal(80, [] {
                             const auto talk = [] {
                               for (int round = 0; round < 100; ++round) {
                                 ShowProgress({"State", "counting", 0.01 * round});
                                 ClearProgress();
                               }
                             };
                             std::thread other(talk);
                             talk();
                             other.join();
                             EndProgress();
                           }).ReadAll();
  EXPECT_THAT(Screen(text, 80), ElementsAre(""));
}

TEST(ProgressElsewhere, IsNotShown) {
  testing::internal::CaptureStderr();
  Work();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "corvo-telemetry-host: one\ncorvo-telemetry-host: two\n");
}

}  // namespace
}  // namespace corvo::telemetry::host
