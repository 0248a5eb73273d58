#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

using telemetry::common::MakeErrorFromException;

const std::string kLongText(100, 'x');

class OutOfMemory : public testing::TestWithParam<std::exception_ptr> {};

// Every allocation on the way fails once: the conversion may lose texts, but it neither throws nor reports success.
TEST_P(OutOfMemory, MakeErrorFromExceptionNeverThrows) {
  static_assert(noexcept(MakeErrorFromException(nullptr)));
  int index = 0;
  for (bool happened = true; happened; ++index) {
    bool failed = false;
    {
      const AllocationFailure failure(index);
      failed = MakeErrorFromException(GetParam()).Failed();
    }
    EXPECT_TRUE(failed) << "allocation " << index;
    happened = AllocationFailure::Happened();
  }
  EXPECT_GT(index, 1) << "no allocation failed";
}

std::string NameOfThing(const testing::TestParamInfo<std::exception_ptr>& thing) {
  return std::vector<std::string>{"Exception", "SystemError", "String", "CString", "Other", "None"}[thing.index];
}

INSTANTIATE_TEST_SUITE_P(Things, OutOfMemory,
                         testing::Values(std::make_exception_ptr(std::runtime_error(kLongText)),
                                         std::make_exception_ptr(std::system_error(5, std::system_category(),
                                                                                   kLongText)),
                                         std::make_exception_ptr(kLongText), std::make_exception_ptr(kLongText.c_str()),
                                         std::make_exception_ptr(1.5), nullptr),
                         NameOfThing);

}  // namespace
}  // namespace corvo::test
