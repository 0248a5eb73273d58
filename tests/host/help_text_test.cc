#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "host/conditions.h"
#include "host/host_process.h"
#include "host/run_fixture.h"
#include "host/show/text_table.h"

namespace corvo::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kProgram = "  corvo-telemetry-host ";

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> WordsOf(const std::string& example) {
  std::istringstream stream(example);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

/// The help of a command; of the program, when it is none.
std::string HelpOf(const std::string& command) {
  return RunHost(command.empty() ? std::vector<std::string>{"--help"} : std::vector<std::string>{command, "--help"})
      .out;
}

/// The words of each example, without the program's name.
std::vector<std::vector<std::string>> ExamplesIn(const std::string& help) {
  std::vector<std::vector<std::string>> examples;
  for (const std::string& line : Lines(help)) {
    if (line.starts_with(kProgram)) {
      examples.push_back(WordsOf(line.substr(kProgram.size())));
    }
  }
  return examples;
}

std::vector<std::string> ProgramAndCommands() {
  std::vector<std::string> names = Commands();
  names.emplace_back();
  return names;
}

class HelpOfCommand : public RunTest, public testing::WithParamInterface<std::string> {
 protected:
  /// The words of an example on the files of this test, and without a long wait.
  std::vector<std::string> Here(std::vector<std::string> words) {
    std::replace(words.begin(), words.end(), std::string("try"), data_);
    std::replace(words.begin(), words.end(), std::string("try.html"), folder_ / "try.html");
    std::replace(words.begin(), words.end(), std::string("60"), std::string("1"));
    return words;
  }
};

TEST_P(HelpOfCommand, BeginsWithOneLineAndExamples) {
  const std::string help = HelpOf(GetParam());
  const std::vector<std::string> lines = Lines(help);
  ASSERT_GT(lines.size(), 4U);
  EXPECT_THAT(lines[0], EndsWith("."));
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], "Examples:");
  EXPECT_THAT(lines[3], StartsWith(kProgram + GetParam()));
  EXPECT_LT(help.rfind(kProgram), help.find("Usage: "));
  EXPECT_GE(ExamplesIn(help).size(), 2U);
}

TEST_P(HelpOfCommand, FitsEightyColumns) {
  for (const std::string& line : Lines(HelpOf(GetParam()))) {
    EXPECT_LE(telemetry::host::TextWidth(line), 80U) << line;
  }
}

TEST_P(HelpOfCommand, EndsWithTheExitCodes) {
  EXPECT_THAT(HelpOf(GetParam()), EndsWith("129 / 130 / 143 interrupted.\n"));
}

TEST_P(HelpOfCommand, GivesExamplesThatAreRightUsage) {
  if (GetParam() != "generate" && !GetParam().empty()) {
    Generate("0.05");
  }
  for (const std::vector<std::string>& example : ExamplesIn(HelpOf(GetParam()))) {
    const HostRun run = RunHost(Here(example));
    EXPECT_NE(run.exit_code, 2) << testing::PrintToString(example) << run.err;
  }
}

INSTANTIATE_TEST_SUITE_P(All, HelpOfCommand, testing::ValuesIn(ProgramAndCommands()),
                         [](const auto& each) { return each.param.empty() ? "program" : each.param; });

TEST(HelpText, NamesAWordOnce) {
  const std::string help = HelpOf("explain");
  EXPECT_THAT(help, HasSubstr("Usage: corvo-telemetry-host explain TABLE [OPTIONS]\n"));
  EXPECT_THAT(help, HasSubstr("\n  TABLE                   Table to explain"));
  EXPECT_THAT(help, Not(HasSubstr("TABLE TABLE")));
}

TEST(HelpText, TellsDefaultsRangesAndWhatIsRequired) {
  EXPECT_THAT(HelpOf("history"), HasSubstr("Most runs to show (from 1 to 200; 20 when not given)"));
  EXPECT_THAT(HelpOf("report"), HasSubstr("status when not given"));
  EXPECT_THAT(HelpOf("report"), HasSubstr("(required)"));
}

}  // namespace
}  // namespace corvo::test
