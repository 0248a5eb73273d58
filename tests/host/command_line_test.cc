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
  EXPECT_EQ(run.Json()["kind"], "failure");
  EXPECT_EQ(run.Json()["result"]["category"], "EC_Custom");
  EXPECT_EQ(run.Json()["result"]["code"], 2);
  EXPECT_EQ(run.Json()["databases"], nlohmann::json::array());
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongUsage,
    testing::Values(
        Words{}, Words{"clean"}, Words{""}, Words{"generate"}, Words{"run", "--data-dir"},
        Words{"run", "--data-dir", "DIR", "--passes", "0"}, Words{"run", "--data-dir", "DIR", "--passes", "many"},
        Words{"run", "--data-dir", "DIR", "--log-level", "loud"},
        Words{"run", "--data-dir", "DIR", "--time-limit", "-1"},
        Words{"run", "--data-dir", "DIR", "--memory-limit", "much"},
        Words{"run", "--data-dir", "DIR", "--busy-timeout", "3601"}, Words{"run", "--data-dir", "DIR", "more"},
        Words{"generate", "--data-dir", "DIR", "--scale", "0"}, Words{"generate", "--data-dir", "DIR", "--days", "0"},
        Words{"generate", "--data-dir", "DIR", "--seed", "-1"},
        Words{"generate", "--data-dir", "DIR", "--seed", "1", "--seed", "2"},
        Words{"generate", "--data-dir", "DIR", "--scale", "inf"}, Words{"generate", "--data-dir", "DIR", "--scale", ""},
        Words{"run", "--data-dir", ""}, Words{"run", "--data-dir="},
        Words{"run", "--data-dir", "DIR", "--wait", "86401"},
        Words{"run", "--data-dir", "DIR", "--database", "Nothing"}, Words{"run", "--data-dir", "DIR", "--database", ""},
        Words{"run", "--data-dir", "DIR", "--log-level", ""}, Words{"run", "generate"}, Words{"run", "--"},
        Words{"run", "++"}, Words{"contracts", "--data-dir", "DIR"},
        Words{"generate", "--data-dir", "DIR", "--live", "0"}, Words{"generate", "--data-dir", "DIR", "--rate", "5"},
        Words{"print"}, Words{"print", "Nothing"}, Words{"print", "Device", "--limit", "0"},
        Words{"print", "Device", "--format", "xml"}, Words{"print", "Device", "PowerEvents"}));

struct Mistake {
  Words words;
  const char* answer;
};

class MistakenWords : public testing::TestWithParam<Mistake> {};

TEST_P(MistakenWords, AreNamedWithWhatWasMeant) {
  EXPECT_EQ(RunHost(GetParam().words).err,
            "corvo-telemetry-host: " + std::string(GetParam().answer) + "; see --help\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, MistakenWords,
    testing::Values(
        Mistake{{}, "name a command: contracts, explain, generate, history, plan, print, report, run, status, verify"},
        Mistake{{"bogus"},
                "there is no command bogus; commands are contracts, explain, generate, history, plan, print, report, "
                "run, status, verify"},
        Mistake{{"bogus", "--help"},
                "there is no command bogus; commands are contracts, explain, generate, history, plan, print, report, "
                "run, status, verify"},
        Mistake{{"Generat"},
                "there is no command Generat (did you mean generate?); commands are contracts, explain, generate, "
                "history, plan, print, report, run, status, verify"},
        Mistake{{""},
                "there is no command \"\"; commands are contracts, explain, generate, history, plan, print, report, "
                "run, status, verify"},
        Mistake{{"run", "all"}, "run takes options only, and all is none"},
        Mistake{{"run", "--jsn"}, "run has no option --jsn (did you mean --json?)"},
        Mistake{{"run", "--pases=3"}, "run has no option --pases (did you mean --passes?)"},
        Mistake{{"contracts", "-x"}, "contracts has no option -x"},
        Mistake{{"--data-dir", ".", "run"}, "there is no option --data-dir before the command"},
        Mistake{{"run", "--data-dir"}, "--data-dir needs a value"},
        Mistake{{"run", "--data-dir", "--quiet"},
                "--data-dir needs a value, and --quiet is an option (a file of that name is ./--quiet)"},
        Mistake{{"run", "--quiet=no"}, "--quiet takes no value"},
        Mistake{{"run", "--exit-code"}, "--exit-code tells of a plan: use plan, or --dry-run with it"},
        Mistake{{"run", "--wait", "1", "--wait=2"}, "--wait is given more than once"},
        Mistake{
            {"run", "--log-level", "eror"},
            "--log-level must be one of none, fatal, brief, error, warning, info, debug, verbose, not \"eror\" (did "
            "you mean error?)"},
        Mistake{{"run", "--database", "Healthlog2"},
                "--database: there is no database Healthlog2 (did you mean HealthLog?); databases are Cache, "
                "DeviceProfile, DeviceProfileEvents, DeviceUsage, HealthLog, PerformanceSamples"}));

class WrongNumber : public testing::TestWithParam<Mistake> {};

TEST_P(WrongNumber, IsRefusedWithAShortRange) {
  Words words = GetParam().words;
  words.insert(words.begin(), {"generate", "--data-dir", "."});
  const HostRun run = RunHost(words);
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.err, "corvo-telemetry-host: " + std::string(GetParam().answer) + "; see --help\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongNumber,
    testing::Values(Mistake{{"--scale", "nan"}, "--scale must be from 0.001 to 1000; nan is not in range"},
                    Mistake{{"--scale", "-inf"}, "--scale must be from 0.001 to 1000; -inf is not in range"},
                    Mistake{{"--scale", "1e-400"}, "--scale must be from 0.001 to 1000; 1e-400 is not in range"},
                    Mistake{{"--scale", "1000.0001"}, "--scale must be from 0.001 to 1000; 1000.0001 is not in range"},
                    Mistake{{"--scale", "1e3x"}, "--scale must be a number from 0.001 to 1000, not \"1e3x\""},
                    Mistake{{"--scale", " 1"}, "--scale must be a number from 0.001 to 1000, not \" 1\""},
                    Mistake{{"--days", "4294967297"}, "--days must be from 1 to 36500; 4294967297 is not in range"},
                    Mistake{{"--days", "1.5"}, "--days must be a whole number from 1 to 36500, not \"1.5\""},
                    Mistake{{"--seed", "-1"},
                            "--seed must be a whole number from 0 to 18446744073709551615, not \"-1\""},
                    Mistake{{"--seed", "18446744073709551616"},
                            "--seed must be from 0 to 18446744073709551615; 18446744073709551616 is not in range"}));

TEST(WrongNumbers, OfManyDigitsAreShownCut) {
  const HostRun run = RunHost({"run", "--passes", std::string(400, '9')});
  EXPECT_THAT(run.err, HasSubstr("; " + std::string(60, '9') + "... is not in range"));
}

TEST(JsonOption, MayStandBeforeTheCommand) {
  EXPECT_EQ(RunHost({"--json", "contracts"}).Json(), RunHost({"contracts", "--json"}).Json());
  EXPECT_EQ(RunHost({"--json", "bogus"}).Json()["result"]["code"], 2);
}

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
                         testing::Values(Words{"generate", "data-dir", "seed", "scale", "days", "now", "force", "json",
                                               "live", "rate", "no-color"},
                                         Words{"print", "data-dir", "oldest", "limit", "format", "time-limit", "json"},
                                         Words{"run", "data-dir", "plugin", "passes", "json", "log-level", "log-file",
                                               "time-limit", "memory-limit", "busy-timeout", "keep-going", "database",
                                               "wait", "quiet", "trust-directory", "dry-run", "max-loss", "force"},
                                         Words{"plan", "data-dir", "plugin", "exit-code", "database", "keep-going",
                                               "json"},
                                         Words{"explain", "rowid", "data-dir", "busy-timeout", "json"},
                                         Words{"report", "html", "of", "data-dir", "database", "plugin", "time-limit",
                                               "memory-limit", "busy-timeout", "json"},
                                         Words{"verify", "data-dir", "database", "busy-timeout", "json"},
                                         Words{"history", "data-dir", "limit", "json"},
                                         Words{"status", "data-dir", "all", "check", "database", "json"},
                                         Words{"contracts", "lint", "json"}));

TEST(Help, OfTheProgramNamesCommandsAndExitCodes) {
  const HostRun run = RunHost({"--help"});
  EXPECT_EQ(run.exit_code, 0);
  for (const char* word : {"generate", "run", "contracts", "3 something was found", "10 no data directory",
                           "11 another run", "12 module not loadable", "129 / 130 / 143 interrupted"}) {
    EXPECT_THAT(run.out, HasSubstr(word));
  }
}

TEST(Help, IsADocumentWhenJsonIsAskedFor) {
  const HostRun run = RunHost({"run", "--json", "--help"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.Json()["text"].get<std::string>(), HasSubstr("--data-dir"));
}

TEST(Help, OfTheProgramBeginsWithExamples) {
  const std::string help = RunHost({"--help"}).out;
  EXPECT_LT(help.find("corvo-telemetry-host generate --data-dir try"), help.find("Usage:"));
  for (const char* words : {"generate", "status", "plan", "run", "verify"}) {
    EXPECT_THAT(help, HasSubstr("  corvo-telemetry-host " + std::string(words) + " --data-dir try"));
  }
}

TEST(Output, ThatIsLostIsAFailure) {
  const HostRun run = RunHostOnFullDisk({"contracts", "--json"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("cannot write standard output"));
}

TEST(Output, ThatNobodyTakesStillLeavesTheExitCode) {
  EXPECT_EQ(RunHostMute({"clean"}).exit_code, 2);
  EXPECT_EQ(RunHostMute({"generate", "--json"}).exit_code, 2);
  EXPECT_EQ(RunHostMute({"contracts"}).exit_code, 1);
}

TEST(Version, IsANumberOfThreeParts) {
  const HostRun run = RunHost({"--version"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.out, MatchesPattern("[0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace corvo::test
