#include <gmock/gmock.h>

#include <algorithm>

#include "host/host_process.h"
#include "support/patterns.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

class WrongUsage : public testing::TestWithParam<Words> {
 protected:
  /// The words of the case, with a folder of the test for DIR.
  Words WordsOfCase() {
    Words words = GetParam();
    std::replace(words.begin(), words.end(), std::string("DIR"), folder_ / "data");
    return words;
  }

  TempDir folder_;
};

TEST_P(WrongUsage, IsExplainedOnStandardErrorOnly) {
  const HostRun run = RunHost(WordsOfCase());
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("--help"));
}

TEST_P(WrongUsage, IsOneJsonDocumentWhenJsonIsAskedFor) {
  Words words = WordsOfCase();
  words.insert(words.empty() ? words.end() : words.begin() + 1, "--json");
  const HostRun run = RunHost(words);
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.Json()["schema_version"], 1);
  EXPECT_EQ(run.Json()["result"]["category"], "EC_Custom");
  EXPECT_EQ(run.Json()["result"]["code"], 2);
  EXPECT_EQ(run.Json()["databases"], nlohmann::json::array());
}

INSTANTIATE_TEST_SUITE_P(All, WrongUsage,
                         testing::Values(Words{}, Words{"clean"}, Words{"run"}, Words{"generate"},
                                         Words{"run", "--data-dir"}, Words{"run", "--data-dir", "DIR", "--passes", "0"},
                                         Words{"run", "--data-dir", "DIR", "--passes", "many"},
                                         Words{"run", "--data-dir", "DIR", "--log-level", "loud"},
                                         Words{"run", "--data-dir", "DIR", "--time-limit", "-1"},
                                         Words{"run", "--data-dir", "DIR", "--memory-limit", "much"},
                                         Words{"run", "--data-dir", "DIR", "--busy-timeout", "3601"},
                                         Words{"run", "--data-dir", "DIR", "more"},
                                         Words{"generate", "--data-dir", "DIR", "--scale", "0"},
                                         Words{"generate", "--data-dir", "DIR", "--days", "0"},
                                         Words{"generate", "--data-dir", "DIR", "--seed", "-1"},
                                         Words{"contracts", "--data-dir", "DIR"}));

class Help : public testing::TestWithParam<Words> {};

TEST_P(Help, NamesEveryOption) {
  const Words& words = GetParam();
  const HostRun run = RunHost({words.front(), "--help"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  for (std::size_t option = 1; option < words.size(); ++option) {
    EXPECT_THAT(run.out, HasSubstr("--" + words[option]));
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, Help,
                         testing::Values(Words{"generate", "data-dir", "seed", "scale", "days", "now", "force"},
                                         Words{"run", "data-dir", "plugin", "passes", "json", "log-level", "log-file",
                                               "time-limit", "memory-limit", "busy-timeout"},
                                         Words{"contracts", "json"}));

TEST(Help, OfTheProgramNamesCommandsAndExitCodes) {
  const HostRun run = RunHost({"--help"});
  EXPECT_EQ(run.exit_code, 0);
  for (const char* word : {"generate", "run", "contracts", "10 no data directory", "12 module not loadable"}) {
    EXPECT_THAT(run.out, HasSubstr(word));
  }
}

TEST(Help, IsADocumentWhenJsonIsAskedFor) {
  const HostRun run = RunHost({"run", "--json", "--help"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.Json()["text"].get<std::string>(), HasSubstr("--data-dir"));
}

TEST(Output, ThatIsLostIsAFailure) {
  const HostRun run = RunHostOnFullDisk({"contracts", "--json"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("cannot write standard output"));
}

TEST(Output, ThatNobodyTakesStillLeavesTheExitCode) {
  EXPECT_EQ(RunHostMute({"clean"}).exit_code, 2);
  EXPECT_EQ(RunHostMute({"run", "--json"}).exit_code, 2);
  EXPECT_EQ(RunHostMute({"contracts"}).exit_code, 1);
}

TEST(Version, IsANumberOfThreeParts) {
  const HostRun run = RunHost({"--version"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.out, MatchesPattern("[0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace corvo::test
