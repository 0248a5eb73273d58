// The page for developers of hosts is a program: its blocks are what the stranger's project is made of.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace corvo::test {
namespace {

std::string ReadFile(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// The page's blocks in this language, in their order, with a blank line between them.
std::string Blocks(const std::string& language) {
  const std::string page = ReadFile(CORVO_HOSTING_PAGE);
  const std::string head = "\n```" + language + "\n";
  std::string blocks;
  for (std::size_t at = page.find(head); at != std::string::npos; at = page.find(head, at)) {
    at += head.size();
    blocks += (blocks.empty() ? "" : "\n") + page.substr(at, page.find("```", at) - at);
  }
  return blocks;
}

TEST(HostingPage, IsTheStrangersProgram) {
  EXPECT_EQ(ReadFile(CORVO_STRANGER "/main.cc"), Blocks("cpp"));
  EXPECT_EQ(ReadFile(CORVO_STRANGER "/CMakeLists.txt"), Blocks("cmake"));
}

TEST(HostingPage, HasBlocks) {
  EXPECT_NE(Blocks("cpp"), "");
  EXPECT_NE(Blocks("cmake"), "");
}

}  // namespace
}  // namespace corvo::test
