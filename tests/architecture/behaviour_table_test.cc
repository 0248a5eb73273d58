#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// Every match of the pattern, as the text of its groups.
std::vector<std::smatch> Matches(const std::string& text, const std::regex& pattern) {
  return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

/// The tests of the project, as "Suite.Name".
std::set<std::string> AllTests(const fs::path& tests) {
  static const std::regex kDefinition(R"(TEST(?:_F|_P)?\((\w+),\s*(\w+)\))");
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(tests)) {
    if (entry.path().extension() == ".cc") {
      const std::string text = ReadFile(entry.path());
      for (const std::smatch& match : Matches(text, kDefinition)) {
        names.insert(match.str(1) + "." + match.str(2));
      }
    }
  }
  return names;
}

/// The names in the page's tables; a suite that is left out is the one before. Stars stand for any text.
std::vector<std::string> NamesOnPage(const std::string& page) {
  static const std::regex kName(R"(`(\w+|…)\.([\w*]+)`)");
  std::vector<std::string> names;
  std::string suite;
  for (const std::smatch& match : Matches(page, kName)) {
    suite = match.str(1) == "…" ? suite : match.str(1);
    names.push_back(suite + "." + match.str(2));
  }
  return names;
}

bool Exists(const std::string& name, const std::set<std::string>& tests) {
  if (name.find('*') == std::string::npos) {
    return tests.count(name) != 0;
  }
  const std::regex pattern(std::regex_replace(name, std::regex(R"(\*)"), "\\w+"));
  return std::any_of(tests.begin(), tests.end(), [&](const auto& test) { return std::regex_match(test, pattern); });
}

TEST(BehaviourTable, NamesTestsThatExist) {
  const fs::path project = CORVO_SOURCE_DIR;
  const std::set<std::string> tests = AllTests(project / "tests");
  std::vector<std::string> names = NamesOnPage(ReadFile(project / "docs" / "tests.md"));
  ASSERT_GT(names.size(), 200u);

  std::erase_if(names, [&tests](const std::string& name) { return Exists(name, tests); });

  EXPECT_THAT(names, testing::IsEmpty());
}

}  // namespace
}  // namespace corvo::test
