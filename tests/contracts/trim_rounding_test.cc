#include <gtest/gtest.h>

#include <ostream>

#include "contracts/rules.h"

namespace corvo::telemetry::contracts {
namespace {

struct RoundingCase {
  const char* name;
  std::uint32_t total_mb, limit_mb, rows, expected;

  friend void PrintTo(const RoundingCase& value, std::ostream* stream) { *stream << value.name; }
};

class TrimRounding : public testing::TestWithParam<RoundingCase> {};

// Every product and sum is rounded by itself, on every processor: a multiplication fused with the addition after it
// would trim one row more in each of these.
TEST_P(TrimRounding, IsThatOfSeparateSteps) {
  const double factor = TrimFactor(GetParam().total_mb, GetParam().limit_mb, 10.0);
  EXPECT_EQ(RowsToTrim(GetParam().rows, factor), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Sizes, TrimRounding,
                         testing::Values(RoundingCase{"TwentyTwoOf130", 14, 13, 130, 22},
                                         RoundingCase{"TwentyTwoOf105", 47, 42, 105, 22},
                                         RoundingCase{"TwentyTwoOf130OfATripledDatabase", 294, 273, 130, 22},
                                         RoundingCase{"HundredAndEightyThreeOf1040", 14, 13, 1040, 183}),
                         [](const auto& test_case) { return test_case.param.name; });

}  // namespace
}  // namespace corvo::telemetry::contracts
