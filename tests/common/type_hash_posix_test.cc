// A program of its own: it replaces the hash that the standard library takes of a type's name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <typeinfo>

#include "common/error.h"

namespace std {

// Visible, so that the libraries find it before the standard library's.
[[gnu::visibility("default")]] size_t _Hash_bytes(const void* /*bytes*/, size_t /*length*/, size_t /*seed*/) {
  return 0x8000'0000'0000'0005;
}

}  // namespace std

namespace corvo::test {
namespace {

using telemetry::common::Error;
using telemetry::common::ErrorText;
using telemetry::common::MakeErrorFromException;

constexpr std::int64_t kSameBits = std::numeric_limits<std::int64_t>::min() + 5;

TEST(TypeHashAbove63Bits, IsStoredUnchanged) {
  ASSERT_GE(typeid(std::string).hash_code(), std::uint64_t{1} << 63);
  EXPECT_EQ(MakeErrorFromException(std::make_exception_ptr(std::string("text"))).code, kSameBits);
  EXPECT_EQ(MakeErrorFromException(std::make_exception_ptr("text")).code, kSameBits);
}

TEST(TypeHashAbove63Bits, ShowsAsANegativeNumber) {
  const Error error = MakeErrorFromException(std::make_exception_ptr(std::string("text")));
  EXPECT_THAT(ErrorText(error), testing::HasSubstr(R"("code":-9223372036854775803,)"));
}

}  // namespace
}  // namespace corvo::test
