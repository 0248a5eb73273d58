#include "host/show/time_text.h"

#include <gtest/gtest.h>

#include "common/timestamp.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

TEST(TimeText, WritesUtcWithItsOffset) {
  EXPECT_EQ(TimeText(0), "1970-01-01T00:00:00+00:00");
  EXPECT_EQ(TimeText(1'714'566'600), "2024-05-01T12:30:00+00:00");
  EXPECT_EQ(TimeText(-1), "1969-12-31T23:59:59+00:00");
}

TEST(StartOfToday, IsAWholeDay) { EXPECT_EQ(StartOfToday() % common::kSecondsPerDay, 0); }

TEST(ParseDay, GivesTheStartOfTheDay) {
  EXPECT_EQ(ParseDay("1970-01-02"), common::kSecondsPerDay);
  EXPECT_EQ(TimeText(ParseDay("2024-02-29")), "2024-02-29T00:00:00+00:00");
}

class ParseDayRefuses : public testing::TestWithParam<const char*> {};

TEST_P(ParseDayRefuses, TextThatIsNoDay) { EXPECT_THROW(static_cast<void>(ParseDay(GetParam())), CommandFailure); }

INSTANTIATE_TEST_SUITE_P(All, ParseDayRefuses,
                         testing::Values("", "today", "2024-5-1", "2024-13-01", "2023-02-29", "2024-05-01T00:00:00",
                                         " 2024-05-01", "20240-05-01"));

}  // namespace
}  // namespace corvo::telemetry::host
