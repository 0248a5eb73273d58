#include "common/timestamp.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <stdexcept>

#include "common/timestamp_fields.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;
using telemetry::common::ReplaceZone;

TEST(FormatUtcTime, WritesDateTimeAndOffset) { EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "2024-05-01T12:30:00+00:00"); }

TEST(FormatUtcTime, PadsEveryFieldWithZeros) {
  std::tm time{};
  time.tm_mday = 2;
  time.tm_hour = 3;
  time.tm_min = 4;
  time.tm_sec = 5;
  EXPECT_EQ(FormatUtcTime(time, 0), "1900-01-02T03:04:05+00:00");
}

TEST_P(FormatUtcTimeField, IsAcceptedWithinItsRangeOnly) {
  std::tm time = SomeTime();
  time.*GetParam().field = GetParam().value;
  EXPECT_EQ(FormatUtcTime(time, 0), GetParam().text);
}

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();
constexpr const char* kSame = "2024-05-01T12:30:00+00:00";

INSTANTIATE_TEST_SUITE_P(Seconds, FormatUtcTimeField,
                         testing::Values(FieldCase{"second", &std::tm::tm_sec, 0, kSame},
                                         FieldCase{"second", &std::tm::tm_sec, 60, "2024-05-01T12:30:60+00:00"},
                                         FieldCase{"second", &std::tm::tm_sec, 62, ""},
                                         FieldCase{"second", &std::tm::tm_sec, -1, ""},
                                         FieldCase{"second", &std::tm::tm_sec, kHighest, ""},
                                         FieldCase{"second", &std::tm::tm_sec, kLowest, ""}));
INSTANTIATE_TEST_SUITE_P(Minutes, FormatUtcTimeField,
                         testing::Values(FieldCase{"minute", &std::tm::tm_min, 0, "2024-05-01T12:00:00+00:00"},
                                         FieldCase{"minute", &std::tm::tm_min, 59, "2024-05-01T12:59:00+00:00"},
                                         FieldCase{"minute", &std::tm::tm_min, 60, ""},
                                         FieldCase{"minute", &std::tm::tm_min, -1, ""}));
INSTANTIATE_TEST_SUITE_P(Hours, FormatUtcTimeField,
                         testing::Values(FieldCase{"hour", &std::tm::tm_hour, 0, "2024-05-01T00:30:00+00:00"},
                                         FieldCase{"hour", &std::tm::tm_hour, 23, "2024-05-01T23:30:00+00:00"},
                                         FieldCase{"hour", &std::tm::tm_hour, 24, ""},
                                         FieldCase{"hour", &std::tm::tm_hour, -1, ""}));
INSTANTIATE_TEST_SUITE_P(DaysOfMonth, FormatUtcTimeField,
                         testing::Values(FieldCase{"day", &std::tm::tm_mday, 0, ""},
                                         FieldCase{"day", &std::tm::tm_mday, 1, kSame},
                                         FieldCase{"day", &std::tm::tm_mday, 31, "2024-05-31T12:30:00+00:00"},
                                         FieldCase{"day", &std::tm::tm_mday, 32, ""},
                                         FieldCase{"day", &std::tm::tm_mday, -1, ""}));
INSTANTIATE_TEST_SUITE_P(Months, FormatUtcTimeField,
                         testing::Values(FieldCase{"month", &std::tm::tm_mon, 0, "2024-01-01T12:30:00+00:00"},
                                         FieldCase{"month", &std::tm::tm_mon, 11, "2024-12-01T12:30:00+00:00"},
                                         FieldCase{"month", &std::tm::tm_mon, 12, ""},
                                         FieldCase{"month", &std::tm::tm_mon, -1, ""}));
INSTANTIATE_TEST_SUITE_P(Years, FormatUtcTimeField,
                         testing::Values(FieldCase{"year", &std::tm::tm_year, 0, "1900-05-01T12:30:00+00:00"},
                                         FieldCase{"year", &std::tm::tm_year, 8099, "9999-05-01T12:30:00+00:00"},
                                         FieldCase{"year", &std::tm::tm_year, -1, ""},
                                         FieldCase{"year", &std::tm::tm_year, kLowest, ""}));
INSTANTIATE_TEST_SUITE_P(Weekdays, FormatUtcTimeField,
                         testing::Values(FieldCase{"weekday", &std::tm::tm_wday, 0, kSame},
                                         FieldCase{"weekday", &std::tm::tm_wday, 6, kSame},
                                         FieldCase{"weekday", &std::tm::tm_wday, 7, ""},
                                         FieldCase{"weekday", &std::tm::tm_wday, -1, ""}));
INSTANTIATE_TEST_SUITE_P(DaysOfYear, FormatUtcTimeField,
                         testing::Values(FieldCase{"day of year", &std::tm::tm_yday, 0, kSame},
                                         FieldCase{"day of year", &std::tm::tm_yday, 365, kSame},
                                         FieldCase{"day of year", &std::tm::tm_yday, 366, ""},
                                         FieldCase{"day of year", &std::tm::tm_yday, -1, ""}));

// Each field is looked at alone: a date that no calendar has is written as it is.
TEST(FormatUtcTime, DoesNotCheckTheDateAsAWhole) {
  std::tm time = SomeTime();
  time.tm_mon = 1;
  time.tm_mday = 31;
  EXPECT_EQ(FormatUtcTime(time, 0), "2024-02-31T12:30:00+00:00");
}

struct OffsetCase {
  std::int32_t hours;
  const char* text;

  friend void PrintTo(const OffsetCase& value, std::ostream* stream) { *stream << value.hours; }
};

class FormatUtcTimeOffset : public testing::TestWithParam<OffsetCase> {};

TEST_P(FormatUtcTimeOffset, IsWrittenAsSignHoursAndMinutes) {
  EXPECT_EQ(FormatUtcTime(SomeTime(), GetParam().hours), std::string("2024-05-01T12:30:00") + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, FormatUtcTimeOffset,
                         testing::Values(OffsetCase{0, "+00:00"}, OffsetCase{1, "+01:00"}, OffsetCase{-1, "-01:00"},
                                         OffsetCase{5, "+05:00"}, OffsetCase{-5, "-05:00"}, OffsetCase{9, "+09:00"},
                                         OffsetCase{-9, "-09:00"}, OffsetCase{10, "+10:00"}, OffsetCase{-10, "-10:00"},
                                         OffsetCase{14, "+14:00"}, OffsetCase{-14, "-14:00"},
                                         OffsetCase{100, "+100:00"},
                                         OffsetCase{std::numeric_limits<std::int32_t>::max(), "+2147483647:00"},
                                         OffsetCase{std::numeric_limits<std::int32_t>::min(), "-2147483648:00"}));

TEST(ReplaceZone, ReplacesExactlyTheLastFiveCharacters) {
  EXPECT_EQ(ReplaceZone("2024-05-01T12:30:00+0730", 2), "2024-05-01T12:30:00+02:00");
  EXPECT_EQ(ReplaceZone("+0730", -2), "-02:00");
}

TEST(ReplaceZone, OverwritesTheTailOfATextWithoutZone) {
  EXPECT_EQ(ReplaceZone("2024-05-01T12:30:00", 0), "2024-05-01T12:+00:00");
}

class ReplaceZoneShort : public testing::TestWithParam<const char*> {};

TEST_P(ReplaceZoneShort, TextIsOutOfRange) {
  EXPECT_THROW(static_cast<void>(ReplaceZone(GetParam(), 0)), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(, ReplaceZoneShort, testing::Values("", "1", "1234"));

}  // namespace
}  // namespace corvo::test
