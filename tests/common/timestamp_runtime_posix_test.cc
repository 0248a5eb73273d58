#include <gtest/gtest.h>
#include <time.h>

#include <locale>

#include "common/timestamp.h"
#include "common/timestamp_fields.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

// The C library then writes no zone at all.
TEST(FormatUtcTime, OverwritesTheTailOfATimeWithUnknownDaylightSaving) {
  tm time{};
  time.tm_mday = 1;
  time.tm_year = 124;
  time.tm_isdst = -1;
  EXPECT_EQ(FormatUtcTime(time, 0), "2024-01-01T00:+00:00");
}

// Years of five digits are written as they are, ungrouped.
INSTANTIATE_TEST_SUITE_P(BeyondTheWindowsRuntime, FormatUtcTimeField,
                         testing::Values(FieldCase{"second", &std::tm::tm_sec, 61, "2024-05-01T12:30:61+00:00"},
                                         FieldCase{"year", &std::tm::tm_year, 8100, "10000-05-01T12:30:00+00:00"},
                                         FieldCase{"year", &std::tm::tm_year, 1'232'667,
                                                   "1234567-05-01T12:30:00+00:00"}));

TEST(FormatUtcTime, IgnoresTheProcessLocale) {
  const std::locale former = std::locale::global(std::locale("en_US"));
  tm time{};
  time.tm_mday = 1;
  time.tm_year = 124;
  EXPECT_EQ(FormatUtcTime(time, 1234), "2024-01-01T00:00:00+1234:00");
  std::locale::global(former);
}

}  // namespace
}  // namespace corvo::test
