#include <gtest/gtest.h>

#include <locale>

#include "common/timestamp.h"
#include "common/timestamp_fields.h"

namespace corvo::test {
namespace {

using telemetry::common::FormatUtcTime;

/// Writes every time as the same word.
class OneWord : public std::time_put<char> {
 protected:
  iter_type do_put(iter_type out, std::ios_base& /*stream*/, char /*fill*/, const std::tm* /*time*/, char /*format*/,
                   char /*modifier*/) const override {
    for (const char character : std::string("sometime")) {
      *out++ = character;
    }
    return out;
  }
};

/// The process's locale while the object lives.
class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : former_(std::locale::global(locale)) {}
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;
  ~GlobalLocale() { std::locale::global(former_); }

 private:
  std::locale former_;
};

// A host may have set its own way of writing times.
TEST(FormatUtcTime, IsNotChangedByAFacetOfTheProcessLocale) {
  const GlobalLocale global(std::locale(std::locale::classic(), new OneWord));
  EXPECT_EQ(FormatUtcTime(SomeTime(), 0), "2024-05-01T12:30:00+00:00");
}

}  // namespace
}  // namespace corvo::test
