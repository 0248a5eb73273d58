#include "cleanup/rules.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace corvo::telemetry::cleanup {
namespace {

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
    [](const auto& test_case) { return test_case.param.name; });

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
                         [](const auto& test_case) { return test_case.param.name; });

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
    [](const auto& test_case) { return test_case.param.name; });

}  // namespace
}  // namespace corvo::telemetry::cleanup
