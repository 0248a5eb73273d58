#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <typeinfo>

#include "common/error.h"

namespace corvo::test {

// Named outside the anonymous namespace: its name shows in records.
struct CustomFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct CustomSystemFailure : std::system_error {
  using std::system_error::system_error;
};

struct Plain {};

namespace {

using telemetry::common::EC_Custom;
using telemetry::common::EC_Std;
using telemetry::common::EC_Unknown;
using telemetry::common::Error;
using telemetry::common::ErrorCategory;
using telemetry::common::MakeErrorFromException;
using testing::EndsWith;
using testing::HasSubstr;

class TextCategory : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "drawer"; }
  [[nodiscard]] std::string message(int value) const override { return "drawer " + std::to_string(value); }
};

const std::error_category& Drawer() {
  static const TextCategory category;
  return category;
}

template <class Thrown>
Error Converted(const Thrown& thrown) {
  return MakeErrorFromException(std::make_exception_ptr(thrown));
}

void ExpectRecord(const Error& error, ErrorCategory category, std::int64_t code, const std::string& what,
                  const std::string& type) {
  EXPECT_EQ(error.category, category);
  EXPECT_EQ(error.code, code);
  EXPECT_EQ(error.what, what);
  EXPECT_THAT(error.type, EndsWith(type));
  EXPECT_EQ(error.origin, "");
}

void ExpectUnknown(const Error& error) {
  ExpectRecord(error, EC_Unknown, 0, "Unknown exception type.", "Unknown");
  EXPECT_EQ(error.type, "Unknown");
}

TEST(ErrorFromStdException, TakesItsTextAndMostDerivedTypeName) {
  const CustomFailure failure("broken");
  const std::exception& e = failure;
  ExpectRecord(Error(e), EC_Std, 1, "broken", "corvo::test::CustomFailure");
}

TEST(ErrorFromStdException, KeepsAnEmptyText) {
  ExpectRecord(Error(std::runtime_error("")), EC_Std, 1, "", "std::runtime_error");
}

TEST(ErrorFromSystemError, ComposesTextFromMessageCategoryAndValue) {
  const std::system_error e(5, Drawer(), "X");
  ExpectRecord(Error(e), EC_Std, 1, "message: 'X: drawer 5' system code : 'drawer:5'", "std::system_error");
}

TEST(ErrorFromSystemError, NamesTheSystemCategory) {
  const std::system_error e(5, std::system_category());
  EXPECT_EQ(Error(e).what, std::string("message: '") + e.what() + "' system code : 'system:5'");
}

TEST(ErrorFromSystemError, WritesNegativeValuesInDecimal) {
  const std::system_error e(std::numeric_limits<int>::min(), Drawer());
  EXPECT_THAT(Error(e).what, EndsWith("' system code : 'drawer:-2147483648'"));
  EXPECT_EQ(Error(e).code, 1);
}

TEST(MakeErrorFromException, TriesSystemErrorBeforeException) {
  const Error error = Converted(CustomSystemFailure(7, Drawer()));
  ExpectRecord(error, EC_Std, 1, "message: 'drawer 7' system code : 'drawer:7'", "corvo::test::CustomSystemFailure");
}

TEST(MakeErrorFromException, ConvertsStdExceptions) {
  ExpectRecord(Converted(CustomFailure("broken")), EC_Std, 1, "broken", "corvo::test::CustomFailure");
}

class MakeErrorFromInt : public testing::TestWithParam<int> {};

TEST_P(MakeErrorFromInt, SignExtendsIt) { ExpectRecord(Converted(GetParam()), EC_Custom, GetParam(), "", "int"); }

INSTANTIATE_TEST_SUITE_P(, MakeErrorFromInt,
                         testing::Values(0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));

class MakeErrorFromUnsignedLong : public testing::TestWithParam<unsigned long> {};

TEST_P(MakeErrorFromUnsignedLong, KeepsItsBits) {
  const Error error = Converted(GetParam());
  ExpectRecord(error, EC_Custom, static_cast<std::int64_t>(GetParam()), "", "unsigned long");
}

// 2^31 and 2^32 - 1 tell zero extension from sign extension where the type has 32 bits.
INSTANTIATE_TEST_SUITE_P(, MakeErrorFromUnsignedLong,
                         testing::Values(0UL, 5UL, 0x80000000UL, 0xFFFFFFFFUL,
                                         std::numeric_limits<unsigned long>::max()));

TEST(MakeErrorFromException, ZeroExtendsAnUnsignedLongOf32Bits) { EXPECT_EQ(Converted(0xFFFFFFFFUL).code, 4294967295); }

TEST(MakeErrorFromException, ConvertsStringWithItsTypesHash) {
  const Error error = Converted(std::string("text"));
  ExpectRecord(error, EC_Custom, static_cast<std::int64_t>(typeid(std::string).hash_code()), "text", "");
  EXPECT_THAT(error.type, HasSubstr("basic_string"));
  EXPECT_NE(error.code, 0);
}

TEST(MakeErrorFromException, ConvertsCStringWithItsTypesHash) {
  const Error error = Converted<const char*>("text");
  ExpectRecord(error, EC_Custom, static_cast<std::int64_t>(typeid(const char*).hash_code()), "text", "");
  EXPECT_THAT(error.type, HasSubstr("char"));
  EXPECT_NE(error.code, Converted(std::string("text")).code);
}

TEST(MakeErrorFromException, TreatsAMutableCStringLikeAConstantOne) {
  char text[] = "text";
  const Error error = Converted<char*>(text);
  EXPECT_EQ(error.what, "text");
  EXPECT_EQ(error.type, Converted<const char*>("").type);
}

TEST(MakeErrorFromException, ReadsANullCStringAsEmptyText) {
  const Error error = Converted<const char*>(nullptr);
  EXPECT_EQ(error.category, EC_Custom);
  EXPECT_EQ(error.what, "");
}

TEST(MakeErrorFromException, GivesTheSameTypeTheSameNameAndCode) {
  EXPECT_EQ(Converted(std::string("a")).type, Converted(std::string("b")).type);
  EXPECT_EQ(Converted(std::string("a")).code, Converted(std::string("b")).code);
}

TEST(MakeErrorFromException, KnowsNoOtherType) {
  ExpectUnknown(Converted(Plain{}));
  ExpectUnknown(Converted(1.5));
  ExpectUnknown(Converted(short{5}));
  ExpectUnknown(Converted(5U));
  ExpectUnknown(Converted(5L));
  ExpectUnknown(Converted(static_cast<const void*>(nullptr)));
}

TEST(MakeErrorFromException, KnowsNoErrorRecordEither) {
  Error thrown;
  thrown.category = EC_Custom;
  thrown.what = "lost";
  ExpectUnknown(Converted(thrown));
}

TEST(MakeErrorFromException, ReadsANullPointerAsUnknown) { ExpectUnknown(MakeErrorFromException(nullptr)); }

TEST(MakeErrorFromException, ConvertsTheOuterOfNestedExceptions) {
  try {
    try {
      throw std::logic_error("inner");
    } catch (...) {
      std::throw_with_nested(CustomFailure("outer"));
    }
  } catch (...) {
    EXPECT_EQ(MakeErrorFromException(std::current_exception()).what, "outer");
  }
}

TEST(MakeErrorFromException, LeavesTheExceptionBeingHandledCurrent) {
  try {
    throw CustomFailure("outer");
  } catch (...) {
    EXPECT_EQ(Converted(7).code, 7);
    EXPECT_EQ(MakeErrorFromException(std::current_exception()).what, "outer");
  }
}

}  // namespace
}  // namespace corvo::test
