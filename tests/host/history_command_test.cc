#include <gmock/gmock.h>

#include <fstream>

#include "host/facts/record/history.h"
#include "host/facts/record/history_line.h"
#include "host/run_fixture.h"
#include "host/show/verify/history_text.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
namespace host = telemetry::host;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

class HistoryCommand : public RunTest {
 protected:
  [[nodiscard]] HostRun History(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"history", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }

  void Remember(int runs) const {
    fs::create_directory(data_);
    std::ofstream file(File(host::kHistoryFile));
    for (int run = 1; run <= runs; ++run) {
      file << host::HistoryLine({.start = run * 86'400, .end = run * 86'400 + 1, .databases = {{.name = "Cache"}}})
           << '\n';
    }
  }
};

TEST_F(HistoryCommand, ShowsWhatRunsDidTheNewestLast) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  {
    Database other(File("Cache.db"));
    other.Run("BEGIN EXCLUSIVE");
    ASSERT_EQ(Run({"--busy-timeout", "0"}).exit_code, 1);
  }
  const HostRun shown = History();
  EXPECT_EQ(shown.exit_code, 0);
  EXPECT_THAT(shown.out, HasSubstr("WHEN (UTC)"));
  EXPECT_LT(shown.out.find(" 5 cleaned"), shown.out.find("4 of 5 cleaned"));
  EXPECT_THAT(shown.out, HasSubstr("not cleaned: Cache (another program holds it locked)"));
  const nlohmann::json runs = History({"--json"}).Json()["runs"];
  ASSERT_THAT(runs, SizeIs(2));
  EXPECT_GT(runs[0]["deleted"]["expired"], 0);
  EXPECT_EQ(runs[0]["problem"], nullptr);
  EXPECT_EQ(runs[1]["problem"], "Cache: another program holds it locked");
}

TEST_F(HistoryCommand, ShowsTheLastTwentyOrAsManyAsAreAskedFor) {
  Remember(30);
  EXPECT_THAT(History({"--json"}).Json()["runs"], SizeIs(20));
  const HostRun two = History({"--limit", "2"});
  EXPECT_THAT(two.out, Not(HasSubstr("1970-01-29")));
  EXPECT_THAT(two.out, HasSubstr("1970-01-30"));
  EXPECT_THAT(two.out, HasSubstr("1970-01-31"));
  EXPECT_EQ(History({"--limit", "0"}).exit_code, 2);
}

TEST_F(HistoryCommand, CountsTheDatabasesThatOptionsLeftUncompacted) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  EXPECT_THAT(History().out, Not(HasSubstr("NOT COMPACTED")));
  ASSERT_EQ(Run({"--max-stall", "0"}).exit_code, 0);
  const HostRun shown = History({"--limit", "1"});
  EXPECT_THAT(shown.out, HasSubstr("NOT COMPACTED"));
  EXPECT_THAT(shown.out, ContainsRegex(" 5 +5 cleaned"));
}

TEST_F(HistoryCommand, SaysThatNoRunIsRecorded) {
  Generate();
  const HostRun shown = History();
  EXPECT_EQ(shown.exit_code, 0);
  EXPECT_THAT(shown.out, HasSubstr("No run is recorded in " + data_));
  EXPECT_THAT(History({"--json"}).Json()["runs"], SizeIs(0));
}

TEST_F(HistoryCommand, SaysWhatLiesInTheFilesPlace) {
  fs::create_directories(File(host::kHistoryFile));
  const HostRun shown = History();
  EXPECT_EQ(shown.exit_code, 1);
  EXPECT_THAT(shown.err, HasSubstr("cannot read the history: " + File(host::kHistoryFile).string()));
}

TEST_F(HistoryCommand, LetsNoFileSpeakToTheTerminal) {
  fs::create_directory(data_);
  std::ofstream(File(host::kHistoryFile)) << host::HistoryLine(
      {.start = 1, .result = "\x1b[31m", .databases = {{.name = "\x1b[2J", .problem = "\x1b]0;x"}}});
  const HostRun shown = History();
  EXPECT_EQ(shown.exit_code, 0);
  EXPECT_THAT(shown.out, Not(HasSubstr("\x1b")));
  EXPECT_THAT(shown.out, HasSubstr("\\x1b[2J"));
}

TEST(HistoryText, TellsTimeAndSpaceInUnits) {
  host::RunRecord run{.start = 0, .end = 75, .seconds = 70, .signal = 2};
  run.databases = {{.name = "Cache", .problem = "interrupted", .bytes_before = 1'000, .bytes_after = 3'500'000}};
  run.result = "interrupted";
  const std::string text = host::HistoryText({.path = "/data", .origin = "default", .problem = ""}, {run}, false);
  EXPECT_THAT(text, HasSubstr("1970-01-01 00:00:00  1 min 10 s  grew 3.5 MB  interrupted, 0 of 1 cleaned"));
}

}  // namespace
}  // namespace corvo::test
