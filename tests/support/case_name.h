#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace corvo::test {

/// Names the cases of a parameterised test, each after its member `name`, or after itself when it is a text:
/// `INSTANTIATE_TEST_SUITE_P(Limits, RowLimit, testing::Values(...), CaseName())`.
struct CaseName {
  template <class Case>
  std::string operator()(const testing::TestParamInfo<Case>& test_case) const {
    if constexpr (std::is_convertible_v<const Case&, std::string>) {
      return test_case.param;
    } else {
      return test_case.param.name;
    }
  }
};

}  // namespace corvo::test
