// A program of its own: the rules compiled for a processor that can fuse.
#include <gtest/gtest.h>

#include "contracts/rules.h"

namespace corvo::telemetry::contracts {
namespace {

// One row more in each of these where a multiplication is fused with the addition after it.
TEST(TrimRoundingOfAFusingProcessor, IsThatOfSeparateSteps) {
  EXPECT_EQ(RowsToTrim(130, TrimFactor(14, 13, 10.0)), 22U);
  EXPECT_EQ(RowsToTrim(105, TrimFactor(47, 42, 10.0)), 22U);
  EXPECT_EQ(RowsToTrim(130, TrimFactor(294, 273, 10.0)), 22U);
  EXPECT_EQ(RowsToTrim(1040, TrimFactor(14, 13, 10.0)), 183U);
}

}  // namespace
}  // namespace corvo::telemetry::contracts
