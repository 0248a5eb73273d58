// A program of its own: the timestamp's own source over locales of the tests' own, for streams that fail.
#include <gtest/gtest.h>

#include <ios>
#include <iterator>
#include <locale>
#include <memory>
#include <new>

#include "common/timestamp.h"
#include "common/timestamp_fields.h"
#include "common/timestamp_locale.h"

namespace corvo::test {
namespace {

std::locale timestamp_locale = std::locale::classic();

}  // namespace
}  // namespace corvo::test

namespace corvo::telemetry::common {

std::locale TimestampLocale() { return test::timestamp_locale; }

bool CanFormat(const std::tm& /*time*/) { return true; }

}  // namespace corvo::telemetry::common

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

/// Ends the writing of a time as `action` does.
class FailingTime : public std::time_put<char> {
 public:
  using Action = iter_type (*)();

  explicit FailingTime(Action action) : action_(action) {}

 protected:
  iter_type do_put(iter_type /*out*/, std::ios_base& /*stream*/, char /*fill*/, const std::tm* /*time*/,
                   char /*format*/, char /*modifier*/) const override {
    return action_();
  }

 private:
  Action action_;
};

/// Leaves a stream that cannot go on, without an exception.
class UnwillingTime : public std::time_put<char> {
 protected:
  iter_type do_put(iter_type out, std::ios_base& stream, char /*fill*/, const std::tm* /*time*/, char /*format*/,
                   char /*modifier*/) const override {
    dynamic_cast<std::ios&>(stream).setstate(std::ios_base::failbit);
    return out;
  }
};

class TimestampStream : public testing::Test {
 protected:
  ~TimestampStream() override { timestamp_locale = std::locale::classic(); }

  static void Use(FailingTime::Action action) {
    timestamp_locale = std::locale(std::locale::classic(), new FailingTime(action));
  }
};

TEST_F(TimestampStream, ThatStaysGoodGivesTheText) {
  EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "2024-05-01T12:30:00+00:00");
}

TEST_F(TimestampStream, ThatIsNotGoodGivesTheEmptyText) {
  Use([] { return FailingTime::iter_type(nullptr); });
  EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "");
}

TEST_F(TimestampStream, ThatFailsWithoutAnExceptionGivesTheEmptyText) {
  timestamp_locale = std::locale(std::locale::classic(), new UnwillingTime);
  EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "");
}

// An empty text would be a cutoff that no row is older than, and the pass a success that expired nothing.
TEST_F(TimestampStream, ThatRunsOutOfMemoryIsNoEmptyText) {
  Use([]() -> FailingTime::iter_type { throw std::bad_alloc(); });
  EXPECT_THROW(static_cast<void>(FormatUtcTime(SomeTime(), 0)), std::bad_alloc);
}

}  // namespace
}  // namespace corvo::test
