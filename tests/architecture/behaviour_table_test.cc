#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

using Lines = std::vector<std::string>;
/// The suites of the project, each with a file that defines tests of it.
using Suites = std::map<std::string, std::string>;

constexpr std::ptrdiff_t kLongestLine = 160;

std::string ReadFile(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// The first group of every match of the pattern.
Lines Matches(const std::string& text, const std::regex& pattern) {
  return {std::sregex_token_iterator(text.begin(), text.end(), pattern, 1), std::sregex_token_iterator()};
}

/// Suites of GoogleTest, and those of tests that CMake names itself.
Suites SuitesOf(const fs::path& project) {
  static const std::regex kDefinition(R"(\n(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+))");
  static const std::regex kCMakeName(R"(\bNAME (\w+)\.)");
  Suites suites;
  for (const auto& entry : fs::recursive_directory_iterator(project / "tests")) {
    const bool is_source = entry.path().extension() == ".cc";
    if (is_source || entry.path().filename() == "CMakeLists.txt") {
      for (const std::string& suite : Matches(ReadFile(entry.path()), is_source ? kDefinition : kCMakeName)) {
        suites[suite] = entry.path().lexically_relative(project).generic_string();
      }
    }
  }
  return suites;
}

/// The names in the rows of the page's tables, behind the behaviour. A star stands for the rest of a name.
Lines NamesOnPage(const std::string& page) {
  static const std::regex kRow(R"(\n\|[^|\n]*\|([^|\n]*)\|(?=\n))");
  static const std::regex kName(R"(`(\w+\*?)`)");
  Lines names;
  for (const std::string& cell : Matches(page, kRow)) {
    const Lines more = Matches(cell, kName);
    names.insert(names.end(), more.begin(), more.end());
  }
  return names;
}

bool Means(const std::string& name, const std::string& suite) {
  return name.ends_with('*') ? suite.starts_with(name.substr(0, name.size() - 1)) : suite == name;
}

Lines NamesWithoutSuite(const std::string& page, const Suites& suites) {
  Lines names = NamesOnPage(page);
  std::erase_if(names, [&](const std::string& name) {
    return std::any_of(suites.begin(), suites.end(), [&](const auto& suite) { return Means(name, suite.first); });
  });
  return names;
}

Lines SuitesWithoutRow(const std::string& page, const Suites& suites) {
  const Lines names = NamesOnPage(page);
  Lines missing;
  for (const auto& suite : suites) {
    if (std::none_of(names.begin(), names.end(), [&](const auto& name) { return Means(name, suite.first); })) {
      missing.push_back("suite " + suite.first + " of " + suite.second + " has no row in docs/tests.md");
    }
  }
  return missing;
}

/// Counts characters: a byte that continues one of UTF-8 is none.
Lines LongLines(const std::string& page) {
  Lines lines = Matches(page, std::regex(R"(([^\n]+))"));
  std::erase_if(lines, [](const std::string& line) {
    return std::count_if(line.begin(), line.end(), [](char byte) { return (byte & 0xC0) != 0x80; }) <= kLongestLine;
  });
  return lines;
}

/// Rows behind a blank line: they belong to no table.
Lines StrayRows(const std::string& page) {
  static const std::regex kStray(R"(\n\n(\|[^\n]*)\n(?!\|---))");
  return Matches(page, kStray);
}

class BehaviourTable : public testing::Test {
 protected:
  const Suites suites_ = SuitesOf(CORVO_SOURCE_DIR);
  const std::string page_ = ReadFile(fs::path(CORVO_SOURCE_DIR) / "docs" / "tests.md");
};

TEST_F(BehaviourTable, NamesSuitesThatExist) { EXPECT_THAT(NamesWithoutSuite(page_, suites_), IsEmpty()); }

TEST_F(BehaviourTable, NamesEverySuite) { EXPECT_THAT(SuitesWithoutRow(page_, suites_), IsEmpty()); }

TEST_F(BehaviourTable, HasShortRows) { EXPECT_THAT(LongLines(page_), IsEmpty()); }

TEST_F(BehaviourTable, HasNoRowOutsideItsTables) { EXPECT_THAT(StrayRows(page_), IsEmpty()); }

TEST_F(BehaviourTable, ReadsSuitesOfEveryKind) {
  const Lines plain_fixture_parameter_type_and_cmake = {"Layers", "BehaviourTable", "Firewall", "CollectionOf",
                                                        "Package"};
  Lines names;
  std::transform(suites_.begin(), suites_.end(), std::back_inserter(names),
                 [](const auto& suite) { return suite.first; });
  EXPECT_THAT(names, IsSupersetOf(plain_fixture_parameter_type_and_cmake));
}

TEST(BehaviourTableRules, ASuiteThatIsNewOrGoneIsTold) {
  const Suites suites = {{"Kept", "tests/a/kept_test.cc"}, {"New", "tests/a/new_test.cc"}};
  const std::string page = "\n| behaviour | suites |\n|---|---|\n| It stays | `Kept`, `Gone` |\n";
  EXPECT_THAT(NamesWithoutSuite(page, suites), ElementsAre("Gone"));
  EXPECT_THAT(SuitesWithoutRow(page, suites),
              ElementsAre("suite New of tests/a/new_test.cc has no row in docs/tests.md"));
}

TEST(BehaviourTableRules, AStarStandsForTheRestOfAName) {
  const Suites suites = {{"Cutoff", ""}, {"CutoffText", ""}};
  EXPECT_THAT(SuitesWithoutRow("\n| Cutoffs | `Cutoff*` |\n", suites), IsEmpty());
}

TEST(BehaviourTableRules, ARowBehindABlankLineIsTold) {
  EXPECT_THAT(StrayRows("\n\n| behaviour | suites |\n|---|---|\n| a | `A` |\n\n| b | `B` |\n"),
              ElementsAre("| b | `B` |"));
}

TEST(BehaviourTableRules, ALongLineIsTold) {
  EXPECT_THAT(LongLines(std::string(160, 'x') + "\n" + std::string(161, 'y') + "\n"),
              ElementsAre(std::string(161, 'y')));
}

}  // namespace
}  // namespace corvo::test
