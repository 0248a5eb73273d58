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
  EXPECT_EQ(Printable("table \x1b[2J\r\n\x7f"), "table ?[2J???");
  EXPECT_EQ(Printable("\xc2\x9b"
                      "2J"),
            "??2J");
}

TEST(Printable, KeepsEveryOtherCharacter) {
  EXPECT_EQ(Printable(""), "");
  EXPECT_EQ(Printable("Gerät Ж 日本 \xc2\xa0"), "Gerät Ж 日本 \xc2\xa0");
}

TEST(Counted, TellsOneFromMany) {
  EXPECT_EQ(Counted(0, "row"), "0 rows");
  EXPECT_EQ(Counted(1, "row"), "1 row");
  EXPECT_EQ(Counted(1500, "row"), "1,500 rows");
}

}  // namespace
}  // namespace corvo::telemetry::host
