#include <gtest/gtest.h>
#include <time.h>

#include <string>

#include "common/timestamp.h"
#include "common/timestamp_fields.h"
#include "support/local_zone.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

class FormatUtcTimeInZone : public testing::TestWithParam<const char*> {};

TEST_P(FormatUtcTimeInZone, NeverWritesTheLocalZone) {
  const LocalZone zone(GetParam());
  EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "2024-05-01T12:30:00+00:00");
  EXPECT_EQ(FormatUtcTime(SomeTime(), -5), "2024-05-01T12:30:00-05:00");
}

// The fields are taken for what they are, and what the system noted about their zone is dropped.
TEST_P(FormatUtcTimeInZone, DropsTheZoneOfALocalTime) {
  const LocalZone zone(GetParam());
  const time_t seconds = 1'714'566'600;  // 2024-05-01T12:30:00 UTC
  const tm* local = localtime(&seconds);
  ASSERT_NE(local, nullptr);
  const std::string text = FormatUtcTime(*local, 0);
  EXPECT_EQ(text.size(), std::string("2024-05-01T12:30:00+00:00").size());
  EXPECT_EQ(text.substr(text.size() - 6), "+00:00");
}

INSTANTIATE_TEST_SUITE_P(, FormatUtcTimeInZone, testing::Values("UTC0", "XXX-5:30", "YYY8", "ZZZ-14"));

}  // namespace
}  // namespace corvo::test
