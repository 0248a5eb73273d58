#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <locale>
#include <optional>
#include <string>

#include "common/timestamp.h"
#include "common/timestamp_fields.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

/// The process's zone while the object lives.
class LocalZone {
 public:
  explicit LocalZone(const char* zone) {
    if (const char* former = getenv("TZ"); former != nullptr) {
      former_ = former;
    }
    Set(zone);
  }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;
  ~LocalZone() { Set(former_ ? former_->c_str() : nullptr); }

 private:
  static void Set(const char* zone) {
    zone != nullptr ? setenv("TZ", zone, 1) : unsetenv("TZ");
    tzset();
  }

  std::optional<std::string> former_;
};

class FormatUtcTimeInZone : public testing::TestWithParam<const char*> {};

TEST_P(FormatUtcTimeInZone, NeverWritesTheLocalZone) {
  const LocalZone zone(GetParam());
  const time_t seconds = 1'714'566'600;  // 2024-05-01T12:30:00 UTC
  tm utc{};
  ASSERT_NE(gmtime_r(&seconds, &utc), nullptr);
  EXPECT_EQ(FormatUtcTime(utc, 0), "2024-05-01T12:30:00+00:00");
  EXPECT_EQ(FormatUtcTime(utc, -5), "2024-05-01T12:30:00-05:00");
}

// The fields are taken for what they are, and what the system noted about their zone is dropped.
TEST_P(FormatUtcTimeInZone, DropsTheZoneOfALocalTime) {
  const LocalZone zone(GetParam());
  const time_t seconds = 1'714'566'600;
  tm local{};
  ASSERT_NE(localtime_r(&seconds, &local), nullptr);
  const std::string text = FormatUtcTime(local, 0);
  EXPECT_EQ(text.size(), std::string("2024-05-01T12:30:00+00:00").size());
  EXPECT_EQ(text.substr(text.size() - 6), "+00:00");
}

INSTANTIATE_TEST_SUITE_P(, FormatUtcTimeInZone, testing::Values("UTC0", "XXX-5:30", "YYY8", "ZZZ-14"));

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
