#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <locale>
#include <stdexcept>

#include "common/timestamp.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

template <class Action>
bool ThrowsRuntimeError(Action action) {
  try {
    static_cast<void>(action());
  } catch (const std::runtime_error&) {
    return true;
  }
  return false;
}

enum Exit { kAsExpected, kLocaleStillThere, kNoError, kErrorForAnInvalidTime };

/// Says by its exit code how a process formats times that finds no locale but the classic one.
[[noreturn]] void FormatWithoutLocales() {
  const TempDir no_locales;
  setenv("LOCPATH", no_locales.Path().c_str(), 1);
  std::tm valid{};
  valid.tm_mday = 1;
  Exit code = kAsExpected;
  if (!ThrowsRuntimeError([] { return std::locale("en_US"); })) {
    code = kLocaleStillThere;
  } else if (!ThrowsRuntimeError([&] { return FormatUtcTime(valid, 0); })) {
    code = kNoError;
  } else if (ThrowsRuntimeError([] { return FormatUtcTime(std::tm(), 0); })) {
    code = kErrorForAnInvalidTime;
  }
  std::filesystem::remove(no_locales.Path());
  // Without the C library's own leftovers of the failed search being counted as leaks.
  std::_Exit(code);
}

TEST(FormatUtcTimeDeathTest, MissingLocaleIsARuntimeErrorForValidTimesOnly) {
  // Started anew: the C library keeps the locales that a process has loaded.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(FormatWithoutLocales(), testing::ExitedWithCode(kAsExpected), "");
}

}  // namespace
}  // namespace corvo::test
