#include "host/show/units.h"

#include <gtest/gtest.h>

#include <limits>

namespace corvo::telemetry::host {
namespace {

TEST(WithSeparators, GroupsDigitsByThousands) {
  EXPECT_EQ(WithSeparators(0), "0");
  EXPECT_EQ(WithSeparators(999), "999");
  EXPECT_EQ(WithSeparators(1000), "1,000");
  EXPECT_EQ(WithSeparators(1234567), "1,234,567");
  EXPECT_EQ(WithSeparators(-999), "-999");
  EXPECT_EQ(WithSeparators(-123456), "-123,456");
  EXPECT_EQ(WithSeparators(std::numeric_limits<std::int64_t>::min()), "-9,223,372,036,854,775,808");
}

TEST(HumanBytes, UsesDecimalUnitsAsTheLimitsDo) {
  EXPECT_EQ(HumanBytes(0), "0 B");
  EXPECT_EQ(HumanBytes(999), "999 B");
  EXPECT_EQ(HumanBytes(1000), "1.0 kB");
  EXPECT_EQ(HumanBytes(38'249'000), "38.2 MB");
  EXPECT_EQ(HumanBytes(-1'500'000), "-1.5 MB");
  EXPECT_EQ(HumanBytes(7'000'000'000'000'000), "7000.0 TB");
}

TEST(HumanBytes, NeverRoundsUpToAThousand) {
  EXPECT_EQ(HumanBytes(999'949), "999.9 kB");
  EXPECT_EQ(HumanBytes(999'950), "1.0 MB");
}

TEST(Printable, SendsNoControlCharacterToATerminal) {
  EXPECT_EQ(Printable("table \x1b[2J\r\n\t\x7f"), R"(table \x1b[2J\x0d\n\t\x7f)");
  EXPECT_EQ(Printable(std::string_view("a\0b", 3)), R"(a\x00b)");
  EXPECT_EQ(Printable("\xc2\x85\xc2\x9b"
                      "2J"),
            R"(\u0085\u009b2J)");
}

TEST(Printable, LetsNoTextTurnTheDirectionOfReadingOrBreakTheLine) {
  EXPECT_EQ(Printable("a\u202etxt.\u2066b\u2069"), R"(a\u202etxt.\u2066b\u2069)");
  EXPECT_EQ(Printable("\u061c\u200e\u200f\u202a\u2028\u2029"), R"(\u061c\u200e\u200f\u202a\u2028\u2029)");
}

TEST(Printable, ShowsBytesThatAreNoUtf8) {
  EXPECT_EQ(Printable("caf\xe9"), R"(caf\xe9)");
  EXPECT_EQ(Printable("cut \xe6\x97"), R"(cut \xe6\x97)");
  EXPECT_EQ(Printable("\xc1\xbf \xe0\x80\x9b \xf0\x80\x80\x9b"), R"(\xc1\xbf \xe0\x80\x9b \xf0\x80\x80\x9b)");
  EXPECT_EQ(Printable("\xed\xa0\x80 \xf4\x90\x80\x80 \xf5"), R"(\xed\xa0\x80 \xf4\x90\x80\x80 \xf5)");
  EXPECT_EQ(Printable("\x9b"
                      "2J\xe9\x1b"),
            R"(\x9b2J\xe9\x1b)");
}

TEST(Printable, MayBeAppliedTwice) {
  const std::string once = Printable("C:\\new\n\x1b\xff");
  EXPECT_EQ(once, R"(C:\new\n\x1b\xff)");
  EXPECT_EQ(Printable(once), once);
}

TEST(Printable, KeepsEveryOtherCharacter) {
  EXPECT_EQ(Printable(""), "");
  EXPECT_EQ(Printable("Gerät Ж 日本 \xc2\xa0"), "Gerät Ж 日本 \xc2\xa0");
  EXPECT_EQ(Printable("\u07ff\u0800\ud7ff\uffff\U00010000\U0010ffff"), "\u07ff\u0800\ud7ff\uffff\U00010000\U0010ffff");
}

TEST(EscapedInJson, LeavesNothingThatCouldSpeakToATerminal) {
  EXPECT_EQ(EscapedInJson("{\n  \"a\": \"\x7f\xc2\x85\xc2\x9b"
                          "31m\u061c\u200e\u202e\u2028\u2069\"\n}"),
            "{\n  \"a\": \"\\u007f\\u0085\\u009b31m\\u061c\\u200e\\u202e\\u2028\\u2069\"\n}");
}

TEST(EscapedInJson, KeepsEveryOtherCharacterAndTheLayout) {
  const std::string document = "{\n  \"Gerät Ж 日本 \xc2\xa0\": \"\\u001b\\n\\\\ \uffff\U0010ffff\"\n}";
  EXPECT_EQ(EscapedInJson(document), document);
}

TEST(Counted, TellsOneFromMany) {
  EXPECT_EQ(Counted(0, "row"), "0 rows");
  EXPECT_EQ(Counted(1, "row"), "1 row");
  EXPECT_EQ(Counted(1500, "row"), "1,500 rows");
}

}  // namespace
}  // namespace corvo::telemetry::host
