#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"

namespace corvo::test {
namespace {

using telemetry::common::EC_Custom;
using telemetry::common::Error;
using telemetry::common::ErrorCategory;
using telemetry::common::ErrorText;
using telemetry::common::ErrorToJson;

std::string Json(const Error& error) {
  std::vector<char> buffer(static_cast<std::size_t>(ErrorToJson(error, nullptr)));
  ErrorToJson(error, buffer.data());
  return buffer.data();
}

Error WithWhat(const std::string& what) {
  Error error;
  error.what = what;
  return error;
}

std::string JsonWithWhat(const std::string& text) {
  return R"({"category":"EC_NoError","code":0,"version":3,"what":")" + text + "\"}";
}

TEST(ErrorToJson, WritesASuccessRecordWithThreeMembers) {
  EXPECT_EQ(Json(Error()), R"({"category":"EC_NoError","code":0,"version":3})");
}

TEST(ErrorToJson, WritesAllMembersInByteOrderOfTheirNamesWithoutBlanks) {
  Error error = WithWhat("no disk");
  error.category = EC_Custom;
  error.code = 42;
  error.type = "label";
  error.origin = "here";
  EXPECT_EQ(Json(error),
            R"({"category":"EC_Custom","code":42,"origin":"here","type":"label","version":3,"what":"no disk"})");
}

TEST(ErrorToJson, WritesARecordOfAnExceptionWithoutOrigin) {
  Error error(std::runtime_error("broken"));
  error.type = "T";
  EXPECT_EQ(Json(error), R"({"category":"EC_Std","code":1,"type":"T","version":3,"what":"broken"})");
}

TEST(ErrorToJson, LeavesOutEachEmptyTextAlone) {
  Error error;
  error.origin = "here";
  EXPECT_EQ(Json(error), R"({"category":"EC_NoError","code":0,"origin":"here","version":3})");
  error.origin.clear();
  error.type = "label";
  EXPECT_EQ(Json(error), R"({"category":"EC_NoError","code":0,"type":"label","version":3})");
}

TEST(ErrorToJson, SaysHowMuchRoomItNeedsAndFillsExactlyThat) {
  const Error error(std::runtime_error("broken"));
  const std::int32_t size = ErrorToJson(error, nullptr);
  std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '#');
  EXPECT_EQ(ErrorToJson(error, buffer.data()), size);
  EXPECT_EQ(std::string(buffer.data()).size() + 1, static_cast<std::size_t>(size));
  EXPECT_EQ(buffer.back(), '#') << "wrote behind the announced size";
}

struct CategoryText {
  std::int32_t value;
  const char* text;

  friend void PrintTo(const CategoryText& category, std::ostream* stream) { *stream << category.value; }
};

class ErrorToJsonCategory : public testing::TestWithParam<CategoryText> {};

TEST_P(ErrorToJsonCategory, IsWrittenAsItsName) {
  Error error;
  error.category = static_cast<ErrorCategory>(GetParam().value);
  EXPECT_EQ(Json(error), std::string(R"({"category":")") + GetParam().text + R"(","code":0,"version":3})");
}

INSTANTIATE_TEST_SUITE_P(, ErrorToJsonCategory,
                         testing::Values(CategoryText{0, "EC_NoError"}, CategoryText{1, "EC_Unknown"},
                                         CategoryText{2, "EC_Std"}, CategoryText{3, "EC_WinApi"},
                                         CategoryText{4, "EC_SEH"}, CategoryText{5, "EC_Custom"},
                                         CategoryText{6, "EC_Unknown"}, CategoryText{-1, "EC_Unknown"},
                                         CategoryText{std::numeric_limits<std::int32_t>::max(), "EC_Unknown"},
                                         CategoryText{std::numeric_limits<std::int32_t>::min(), "EC_Unknown"}));

class ErrorToJsonCode : public testing::TestWithParam<std::int64_t> {};

TEST_P(ErrorToJsonCode, IsWrittenAsASignedInteger) {
  Error error;
  error.code = GetParam();
  EXPECT_EQ(Json(error), R"({"category":"EC_NoError","code":)" + std::to_string(GetParam()) + R"(,"version":3})");
}

INSTANTIATE_TEST_SUITE_P(, ErrorToJsonCode,
                         testing::Values(1, -1, std::int64_t{1} << 53, std::numeric_limits<std::int64_t>::max(),
                                         std::numeric_limits<std::int64_t>::min()));

TEST(ErrorToJson, ShowsAHashAbove63BitsAsANegativeNumber) {
  Error error;
  error.category = EC_Custom;
  error.code = static_cast<std::int64_t>(0xFFFFFFFFFFFFFFFEULL);
  EXPECT_EQ(Json(error), R"({"category":"EC_Custom","code":-2,"version":3})");
}

TEST(ErrorToJson, PassesUtf8Through) {
  const std::string text =
      "Gr\xC3\xB6\xC3\x9F"
      "e \xE6\xB8\xA9 \xF0\x9F\x94\x8B";
  EXPECT_EQ(Json(WithWhat(text)), JsonWithWhat(text));
}

TEST(ErrorToJson, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(Json(WithWhat("\"c:\\data\"\n\t\x01")), JsonWithWhat(R"(\"c:\\data\"\n\t\u0001)"));
}

TEST(ErrorToJson, KeepsWhatFollowsAZeroByte) {
  EXPECT_EQ(Json(WithWhat(std::string("a\0b", 3))), JsonWithWhat(R"(a\u0000b)"));
}

class InvalidUtf8 : public testing::TestWithParam<std::string Error::*> {};

TEST_P(InvalidUtf8, IsAnErrorOfTheJsonLibraryAndLogsAsNull) {
  Error error(std::runtime_error("broken"));
  error.*GetParam() = "caf\xE9";
  EXPECT_THROW(ErrorToJson(error, nullptr), nlohmann::json::exception);
  EXPECT_EQ(ErrorText(error), "(null)");
}

std::string NameOfText(const testing::TestParamInfo<std::string Error::*>& text) {
  return std::vector<std::string>{"What", "Type", "Origin"}[text.index];
}

INSTANTIATE_TEST_SUITE_P(Texts, InvalidUtf8, testing::Values(&Error::what, &Error::type, &Error::origin), NameOfText);

TEST(ErrorText, IsTheJsonText) {
  const Error error(std::runtime_error("broken"));
  EXPECT_EQ(ErrorText(error), Json(error));
}

}  // namespace
}  // namespace corvo::test
