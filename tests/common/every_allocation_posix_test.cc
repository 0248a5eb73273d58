// A program of its own: every allocation on the way fails once, the C library's too.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "common/error.h"
#include "common/timestamp.h"
#include "common/timestamp_fields.h"
#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

using telemetry::common::Error;
using telemetry::common::ErrorText;
using telemetry::common::ErrorToJson;
using telemetry::common::FormatUtcTime;

/// Runs the action with one allocation after the other failing, until none is left. Exceptions are left to `failed`.
template <class Action, class Failed>
int FailEach(Action action, Failed failed) {
  for (int index = 0;; ++index) {
    try {
      const AllocationFailure failure(index);
      action();
    } catch (...) {
      failed();
    }
    if (!AllocationFailure::Happened()) {
      return index;
    }
  }
}

Error LongRecord() {
  Error error(std::runtime_error(std::string(100, 'x')));
  error.origin = std::string(100, 'y');
  return error;
}

void ExpectOutOfMemory() { EXPECT_THROW(throw, std::bad_alloc); }

TEST(EveryAllocationOf, TheJsonTextEndsInOutOfMemoryOrInTheText) {
  const Error error = LongRecord();
  const std::string expected = ErrorText(error);
  char buffer[1000];
  const int allocations = FailEach(
      [&] {
        ErrorToJson(error, buffer);
        EXPECT_EQ(expected, buffer);
      },
      ExpectOutOfMemory);
  EXPECT_GT(allocations, 3);
}

TEST(EveryAllocationOf, TheTextForLogsEndsInNullOrInTheText) {
  const Error error = LongRecord();
  const std::string expected = ErrorText(error);
  FailEach(
      [&] {
        const std::string text = ErrorText(error);
        EXPECT_TRUE(text == expected || text == "(null)") << text;
      },
      [] { ADD_FAILURE() << "nothing may be thrown"; });
}

// The library keeps what it knows of the locale from the first time on, so the first time is the one that counts.
TEST(EveryAllocationOf, ATimestampEndsInOutOfMemoryOrInTheText) {
  const std::tm time = SomeTime();
  const int allocations =
      FailEach([&] { EXPECT_EQ(FormatUtcTime(time, 0), "2024-05-01T12:30:00+00:00"); }, ExpectOutOfMemory);
  // Builds with sanitizers keep their malloc: only operator new counts there.
  EXPECT_GE(allocations, 3);
}

}  // namespace
}  // namespace corvo::test
