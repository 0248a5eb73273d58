#include "contracts/rules.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <tuple>
#include <utility>

#include "support/case_name.h"
#include "support/fake_clock.h"

namespace corvo::telemetry::contracts {
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

TEST(BrokenDownUtc, EndsWithTheYear9999) {
  EXPECT_EQ(CutoffText(253'402'300'799), "9999-12-31T23:59:59+00:00");
  EXPECT_FALSE(BrokenDownUtc(253'402'300'800).has_value());
}

TEST(BrokenDownUtc, IsThatOfTheCLibrary) {
  // From 1970 to 2999 in steps of 17 hours or so, so that every day and every time of day has its turn.
  for (std::time_t seconds = 0; seconds < 32'500'000'000; seconds += 61'327) {
    const std::tm actual = BrokenDownUtc(seconds).value();
    const std::tm expected = *std::gmtime(&seconds);
    ASSERT_EQ(std::tuple(actual.tm_sec, actual.tm_min, actual.tm_hour, actual.tm_mday, actual.tm_mon, actual.tm_year),
              std::tuple(expected.tm_sec, expected.tm_min, expected.tm_hour, expected.tm_mday, expected.tm_mon,
                         expected.tm_year))
        << seconds;
    ASSERT_EQ(std::pair(actual.tm_wday, actual.tm_yday), std::pair(expected.tm_wday, expected.tm_yday)) << seconds;
  }
}

struct MeasurementCase {
  const char* name;
  std::int32_t page_size, page_number, expected;

  friend void PrintTo(const MeasurementCase& value, std::ostream* stream) { *stream << value.name; }
};

class MegabytesTest : public testing::TestWithParam<MeasurementCase> {};

TEST_P(MegabytesTest, RoundsThe32BitProductToTheNearestMegabyte) {
  EXPECT_EQ(Megabytes(GetParam().page_size, GetParam().page_number), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Products, MegabytesTest,
    testing::Values(MeasurementCase{"Page123Of4096", 4096, 123, 1}, MeasurementCase{"Page122Of4096", 4096, 122, 0},
                    MeasurementCase{"OneByteBelowHalf", 499'999, 1, 0}, MeasurementCase{"Half", 500'000, 1, 1},
                    MeasurementCase{"OneAndAHalf", 1'500'000, 1, 2},
                    MeasurementCase{"OneByteBelowTwoAndAHalf", 2'499'999, 1, 2}, MeasurementCase{"Zero", 0, 77, 0},
                    MeasurementCase{"NoPage", 4096, 0, 0}, MeasurementCase{"NegativePageNumber", 4096, -1, 0},
                    MeasurementCase{"BothNegative", -1000, -1000, 1},
                    MeasurementCase{"OverflowToZero", 65'536, 65'536, 0},
                    MeasurementCase{"OverflowToNegative", 65'536, 32'768, 0},
                    MeasurementCase{"OverflowToNegativeByOnePage", 4096, 524'288, 0},
                    MeasurementCase{"OverflowPastZeroIsSmall", 65'536, 65'536 + 23, 2},
                    MeasurementCase{"LastBeforeTheSumWraps", 2'146'983'647, 1, 2147},
                    MeasurementCase{"FirstWhoseSumWraps", 2'146'983'648, 1, -2147},
                    MeasurementCase{"LargestProduct", std::numeric_limits<std::int32_t>::max(), 1, -2146}),
    test::CaseName());

constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();
constexpr double kMargin = 10.0;

struct RowLimitCase {
  const char* name;
  std::uint32_t count, limit, expected;

  friend void PrintTo(const RowLimitCase& value, std::ostream* stream) { *stream << value.name; }
};

class RowsOverLimitTest : public testing::TestWithParam<RowLimitCase> {};

TEST_P(RowsOverLimitTest, TakesAllAboveTheLimitLessItsMargin) {
  EXPECT_EQ(RowsOverLimit(GetParam().count, GetParam().limit, kMargin), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Limits, RowsOverLimitTest,
    testing::Values(RowLimitCase{"ExactlyTheMarginBelow", 900, 1000, 0},
                    RowLimitCase{"OneAboveTheMargin", 901, 1000, 1},
                    RowLimitCase{"BelowTheLimitAboveTheMargin", 950, 1000, 50},
                    RowLimitCase{"AtTheLimit", 1000, 1000, 100}, RowLimitCase{"FarAboveTheLimit", 5000, 1000, 4100},
                    RowLimitCase{"FractionOfARowIsDropped", 5, 5, 1}, RowLimitCase{"FourOfFiveStay", 4, 5, 0},
                    RowLimitCase{"LimitOneKeepsNothing", 1, 1, 1}, RowLimitCase{"LimitOneOfMany", 7, 1, 7},
                    RowLimitCase{"LimitTwoKeepsOne", 7, 2, 6}, RowLimitCase{"NoRows", 0, 1, 0},
                    // 90 % of the widest limit does not fit into 31 bits: every row stays.
                    RowLimitCase{"WidestLimitKeepsAll", 2'147'483'647, kHighest, 0},
                    RowLimitCase{"LimitBeyondSignedRange", 2'147'483'647, 2'500'000'000, 0},
                    RowLimitCase{"LargestLimitWithinRange", 2'147'483'647, 2'386'092'941, 1},
                    // A count beyond 31 bits reads as negative and is never over a limit.
                    RowLimitCase{"CountBeyondSignedRange", 2'147'483'648, 10, 0},
                    RowLimitCase{"WidestCount", kHighest, 1, 0}),
    test::CaseName());

TEST(RowsOverLimit, WithoutAMarginTrimsDownToTheLimit) {
  EXPECT_EQ(RowsOverLimit(1000, 1000, 0.0), 0U);
  EXPECT_EQ(RowsOverLimit(1001, 1000, 0.0), 1U);
}

struct FactorCase {
  const char* name;
  std::uint32_t total, limit;
  double expected;

  friend void PrintTo(const FactorCase& value, std::ostream* stream) { *stream << value.name; }
};

class TrimFactorTest : public testing::TestWithParam<FactorCase> {};

TEST_P(TrimFactorTest, IsTheMarginPlusTheExcessDividedByTheLimit) {
  EXPECT_DOUBLE_EQ(TrimFactor(GetParam().total, GetParam().limit, kMargin), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Sizes, TrimFactorTest,
                         testing::Values(FactorCase{"AtTheLimit", 100, 100, 0.1},
                                         FactorCase{"OnePercentOver", 101, 100, 0.11},
                                         FactorCase{"TwentyPercentOver", 120, 100, 0.3},
                                         FactorCase{"EverythingFrom1Point9Times", 190, 100, 1.0},
                                         FactorCase{"MoreThanEverything", 250, 100, 1.6},
                                         FactorCase{"SmallestLimit", 3, 1, 2.1},
                                         FactorCase{"WidestTotal", kHighest, 1, 4294967294.1}),
                         test::CaseName());

struct ShareCase {
  const char* name;
  std::uint32_t count;
  double factor;
  std::uint32_t expected;

  friend void PrintTo(const ShareCase& value, std::ostream* stream) { *stream << value.name; }
};

class RowsToTrimTest : public testing::TestWithParam<ShareCase> {};

TEST_P(RowsToTrimTest, IsTheShareOfTheRowsButAtLeastOne) {
  EXPECT_EQ(RowsToTrim(GetParam().count, GetParam().factor), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Shares, RowsToTrimTest,
    testing::Values(ShareCase{"TenthOf5000", 5000, 0.1, 500}, ShareCase{"TenthOf10", 10, 0.1, 1},
                    ShareCase{"TenthOf2IsStillOne", 2, 0.1, 1}, ShareCase{"NoRowsIsStillOne", 0, 0.1, 1},
                    ShareCase{"ElevenPercentOf5000", 5000, 0.11, 550}, ShareCase{"ThirtyPercentOf1000", 1000, 0.3, 300},
                    ShareCase{"FractionOfARowIsDropped", 19, 0.1, 1}, ShareCase{"TwoOfTwentyNine", 29, 0.1, 2},
                    ShareCase{"MoreThanThereAre", 100, 1.6, 160},
                    ShareCase{"CountBeyondSignedRangeIsNegative", 2'147'483'648, 0.5, 1},
                    ShareCase{"ProductBeyondSignedRange", 2'000'000'000, 1.6, 2'147'483'647}),
    test::CaseName());

}  // namespace
}  // namespace corvo::telemetry::contracts
