#include "cleanup/cutoff.h"

#include <gtest/gtest.h>

#include "cleanup/broken_down_utc.h"
#include "support/fake_clock.h"

namespace corvo::telemetry::cleanup {
namespace {

constexpr std::int64_t kNow = test::FakeClock::kStart;

TEST(Cutoff, LiesRetentionDaysOf86400SecondsBack) {
  EXPECT_EQ(Cutoff(kNow, 1), kNow - 86'400);
  EXPECT_EQ(Cutoff(kNow, 30), kNow - 30 * 86'400);
}

TEST(Cutoff, MayLieBefore1970) { EXPECT_EQ(Cutoff(kNow, 30'000), kNow - 2'592'000'000); }

TEST(Cutoff, CountsSecondsIn32BitsSoThatRetentionsAbove49710DaysWrap) {
  EXPECT_EQ(Cutoff(kNow, 49'710), kNow - 4'294'944'000);
  EXPECT_EQ(Cutoff(kNow, 49'711), kNow - 63'104);
  EXPECT_EQ(Cutoff(kNow, 4'294'967'295), kNow - 4'294'880'896);
}

TEST(CutoffText, IsUtcWithASpelledOutOffset) {
  EXPECT_EQ(CutoffText(kNow - 86'400), "2024-05-01T00:00:00+00:00");
  EXPECT_EQ(CutoffText(1'709'164'799), "2024-02-28T23:59:59+00:00");
}

TEST(CutoffText, BeginsWith1970) { EXPECT_EQ(CutoffText(0), "1970-01-01T00:00:00+00:00"); }

class CutoffTextBefore1970 : public testing::TestWithParam<std::int64_t> {};

TEST_P(CutoffTextBefore1970, IsTheEmptyText) { EXPECT_EQ(CutoffText(GetParam()), ""); }

INSTANTIATE_TEST_SUITE_P(Seconds, CutoffTextBefore1970, testing::Values(-1, -2, -86'400, -877'392'000, INT64_MIN));

TEST(CutoffText, IsEmptyBeyondTheCalendarsRange) { EXPECT_EQ(CutoffText(INT64_MAX), ""); }

TEST(BrokenDownUtc, KnowsNoTimeBefore1970) {
  EXPECT_FALSE(BrokenDownUtc(-1).has_value());
  EXPECT_TRUE(BrokenDownUtc(0).has_value());
}

}  // namespace
}  // namespace corvo::telemetry::cleanup
