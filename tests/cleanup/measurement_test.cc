#include "cleanup/measurement.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace corvo::telemetry::cleanup {
namespace {

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
    [](const auto& test_case) { return test_case.param.name; });

}  // namespace
}  // namespace corvo::telemetry::cleanup
