#include <gtest/gtest.h>
#include <stdlib.h>

#include <locale>
#include <stdexcept>

#include "common/timestamp.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

// A program of its own: the C library keeps the locales that it has loaded.
TEST(MissingLocale, IsARuntimeErrorForValidTimesOnly) {
  const TempDir no_locales;
  ASSERT_EQ(setenv("LOCPATH", no_locales.Path().c_str(), 1), 0);
  ASSERT_THROW(std::locale("en_US"), std::runtime_error) << "the locale is still there";
  std::tm time{};
  time.tm_mday = 1;
  EXPECT_THROW(static_cast<void>(FormatUtcTime(time, 0)), std::runtime_error);
  time.tm_mday = 0;
  EXPECT_EQ(FormatUtcTime(time, 0), "");
}

}  // namespace
}  // namespace corvo::test
