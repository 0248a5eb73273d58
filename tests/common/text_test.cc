// Texts that cross the borders between the platform, SQLite, JSON and database files.
#include "common/text.h"

#include <gtest/gtest.h>

namespace corvo::test {
namespace {

using telemetry::common::PathFromUtf8;
using telemetry::common::Utf8;
using telemetry::common::ValidUtf8;

TEST(PathText, IsUtf8InBothDirections) {
  const std::filesystem::path path = PathFromUtf8("d\xC3\xA9p\xC3\xB4t/\xE6\x95\xB0\xE6\x8D\xAE.db");

  EXPECT_EQ(path.filename(), std::filesystem::path(u8"\u6570\u636e.db"));
  EXPECT_EQ(Utf8(path), "d\xC3\xA9p\xC3\xB4t/\xE6\x95\xB0\xE6\x8D\xAE.db");
}

TEST(RepairedText, KeepsWhatIsValid) {
  EXPECT_EQ(ValidUtf8(""), "");
  EXPECT_EQ(ValidUtf8("a\"\\\n\xE2\x82\xAC\xF0\x9F\x98\x80"), "a\"\\\n\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(ValidUtf8(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(RepairedText, HasTheReplacementCharacterForWhatIsNot) {
  EXPECT_EQ(ValidUtf8("Ba\xFF"
                      "d"),
            "Ba\xEF\xBF\xBD"
            "d");
  EXPECT_EQ(ValidUtf8("\xC3"), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace corvo::test
