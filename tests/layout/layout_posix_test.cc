// The order of virtual operations is binary contract, by every compiler. Asked of clang, which lays classes out for
// Windows too, as the compiler there does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <map>
#include <ostream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvo::test {
namespace {

using testing::ElementsAre;
using Slots = std::vector<std::string>;

struct Target {
  const char* name;
  const char* triple;

  friend void PrintTo(const Target& value, std::ostream* stream) { *stream << value.name; }
};

/// What the compiler says about the tables of the classes.
std::string Dump(const std::string& triple) {
  const std::string command =
      std::string(CORVO_CLANG) + " --target=" + triple +
      " -std=c++20 -w -nostdinc -I" CORVO_EMPTY_HEADERS " -I" CORVO_SOURCE_DIR "/src -include " CORVO_SOURCE_DIR
      "/tests/layout/declarations.h -Xclang "
      "-fdump-vtable-layouts -S -emit-llvm -o /dev/null " CORVO_SOURCE_DIR "/tests/layout/classes.cc";
  FILE* const output = popen(command.c_str(), "r");
  if (output == nullptr) {
    throw std::runtime_error("cannot run " + command);
  }
  std::string text;
  for (int character = fgetc(output); character != EOF; character = fgetc(output)) {
    text.push_back(static_cast<char>(character));
  }
  if (pclose(output) != 0) {
    throw std::runtime_error("failed: " + command);
  }
  return text;
}

/// A slot as the operation's name and parameters, whatever class declares it; empty for one that no caller sees.
std::string Slot(const std::string& line) {
  static const std::regex kOperation(R"(\s*\d+ \| .*?(~?)(\w+)(\([^)]*\))( const)?( \[.*\])?)");
  std::smatch match;
  if (!std::regex_match(line, match, kOperation) || match.str(2) == "offset_to_top" ||
      match.str(5).find("deleting") != std::string::npos) {
    // A destructor counts once: where it takes two slots, the second follows the first.
    return match.size() > 5 && match.str(5) == " [scalar deleting]" ? "destructor" : "";
  }
  return match.str(1) == "~" ? "destructor" : match.str(2) + match.str(3);
}

/// The slots of every class, by its name.
std::map<std::string, Slots> Tables(const std::string& dump) {
  static const std::regex kHeading(R"(VF?[Tt]able for .*'([\w:]+)' \(\d+ entr\w+\)\.)");
  std::map<std::string, Slots> tables;
  Slots* slots = nullptr;
  std::istringstream lines(dump);
  for (std::string line; std::getline(lines, line);) {
    std::smatch heading;
    if (std::regex_match(line, heading, kHeading)) {
      slots = &(tables[heading.str(1)] = {});
    } else if (line.empty()) {
      slots = nullptr;
    } else if (slots != nullptr && !Slot(line).empty()) {
      slots->push_back(Slot(line));
    }
  }
  return tables;
}

class Layout : public testing::TestWithParam<Target> {
 protected:
  [[nodiscard]] Slots Of(const std::string& name) const {
    const auto found = tables_.find(name);
    return found != tables_.end() ? found->second : Slots{"no such class"};
  }

 private:
  std::map<std::string, Slots> tables_ = Tables(Dump(GetParam().triple));
};

TEST_P(Layout, OfACommand) {
  const auto slots = ElementsAre(
      "GetSqlStatement()", "GetResults()", "Execute(const char *, bool, const char **, const int &)",
      "Execute(const char *, const char **, const int &)", "HasNext()", "Next()", "destructor", "GetLastError()");
  EXPECT_THAT(Of("corvo::shared::ICommand"), slots);
  EXPECT_THAT(Of("corvo::shared::SqlCommand"), slots);
}

TEST_P(Layout, OfThePluginInterface) {
  EXPECT_THAT(Of("corvo::shared::plugin::IDynamicPluginModule"),
              ElementsAre("Execute(const char *, char *)", "destructor",
                          "Execute(const char *, char *&, const corvo::shared::plugin::PluginBufferAllocator &)"));
}

TEST_P(Layout, OfACollector) {
  const auto slots =
      ElementsAre("Execute(const char *, char *)", "destructor",
                  "Execute(const char *, char *&, const corvo::shared::plugin::PluginBufferAllocator &)",
                  "Finalize(const corvo::telemetry::common::Error &)", "Configure(const char *)", "ReadSource()");
  EXPECT_THAT(Of("corvo::telemetry::common::TelemetryCollectorBase"), slots);
  EXPECT_THAT(Of("DataCleanup"), slots);
}

TEST_P(Layout, OfARecordIsItsDestructor) {
  EXPECT_THAT(Of("corvo::telemetry::common::Error"), ElementsAre("destructor"));
}

TEST_P(Layout, OfACollectionIsItsDestructor) {
  EXPECT_THAT(Of("corvo::telemetry::common::collection::ContractsCollection"), ElementsAre("destructor"));
}

INSTANTIATE_TEST_SUITE_P(Targets, Layout,
                         testing::Values(Target{"Linux", "x86_64-pc-linux-gnu"},
                                         Target{"Msvc", "x86_64-pc-windows-msvc"},
                                         Target{"MinGW", "x86_64-w64-windows-gnu"}),
                         [](const auto& test_case) { return test_case.param.name; });

}  // namespace
}  // namespace corvo::test
