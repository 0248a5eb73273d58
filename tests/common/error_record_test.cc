#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>
#include <utility>

#include "common/error.h"

namespace corvo::test {
namespace {

using telemetry::common::EC_Custom;
using telemetry::common::EC_NoError;
using telemetry::common::EC_SEH;
using telemetry::common::EC_Std;
using telemetry::common::EC_Unknown;
using telemetry::common::EC_WinApi;
using telemetry::common::Error;
using telemetry::common::ErrorCategory;

Error FullRecord() {
  Error error;
  error.category = EC_WinApi;
  error.code = -5;
  error.what = "no disk";
  error.type = "label";
  error.origin = "here";
  return error;
}

void ExpectFullRecord(const Error& error) {
  EXPECT_EQ(error.category, EC_WinApi);
  EXPECT_EQ(error.code, -5);
  EXPECT_EQ(error.what, "no disk");
  EXPECT_EQ(error.type, "label");
  EXPECT_EQ(error.origin, "here");
}

void ExpectSuccessRecord(const Error& error) {
  EXPECT_EQ(error.category, EC_NoError);
  EXPECT_EQ(error.code, 0);
  EXPECT_EQ(error.what, "");
  EXPECT_EQ(error.type, "");
  EXPECT_EQ(error.origin, "");
}

TEST(ErrorRecord, DefaultConstructedMeansSuccess) { ExpectSuccessRecord(Error()); }

TEST(ErrorRecord, HasA32BitSignedCategoryAndA64BitSignedCode) {
  static_assert(std::is_same_v<std::underlying_type_t<ErrorCategory>, std::int32_t>);
  static_assert(std::is_same_v<decltype(Error::code), std::int64_t>);
  EXPECT_EQ(sizeof(ErrorCategory), 4U);
}

TEST(ErrorRecord, CategoriesKeepTheirValues) {
  EXPECT_EQ(int{EC_NoError}, 0);
  EXPECT_EQ(int{EC_Unknown}, 1);
  EXPECT_EQ(int{EC_Std}, 2);
  EXPECT_EQ(int{EC_WinApi}, 3);
  EXPECT_EQ(int{EC_SEH}, 4);
  EXPECT_EQ(int{EC_Custom}, 5);
}

TEST(ErrorRecord, KeepsItsFieldsInOrder) {
  const Error error;
  const void* const fields[] = {&error, &error.category, &error.code, &error.what, &error.type, &error.origin};
  for (std::size_t index = 1; index < std::size(fields); ++index) {
    EXPECT_LT(fields[index - 1], fields[index]);
  }
}

TEST(ErrorRecord, IsPolymorphicThroughItsDestructor) {
  static_assert(std::is_polymorphic_v<Error> && std::has_virtual_destructor_v<Error>);
  struct Derived : Error {
    explicit Derived(bool& destroyed) : destroyed_(destroyed) {}
    Derived(const Derived&) = default;
    Derived& operator=(const Derived&) = delete;
    ~Derived() override { destroyed_ = true; }
    bool& destroyed_;
  };
  bool destroyed = false;
  const Error* error = new Derived(destroyed);
  delete error;
  EXPECT_TRUE(destroyed);
}

TEST(ErrorRecord, CopyHasTheSameFieldsAndIsIndependent) {
  Error original = FullRecord();
  const Error copy(original);
  original.what = "changed";
  original.code = 0;
  ExpectFullRecord(copy);
}

TEST(ErrorRecord, AssignmentReplacesEveryField) {
  Error assigned;
  assigned.what = "former";
  Error& result = assigned = FullRecord();
  ExpectFullRecord(assigned);
  EXPECT_EQ(&result, &assigned);
  assigned = Error();
  ExpectSuccessRecord(assigned);
}

TEST(ErrorRecord, SelfAssignmentLeavesItUnchanged) {
  Error error = FullRecord();
  const Error& same = error;
  error = same;
  ExpectFullRecord(error);
}

TEST(ErrorRecord, CanBeMovedWithoutFailing) {
  static_assert(std::is_nothrow_move_constructible_v<Error> && std::is_nothrow_move_assignable_v<Error>);
  Error original = FullRecord();
  Error moved(std::move(original));
  ExpectFullRecord(moved);
  Error assigned;
  assigned = std::move(moved);
  ExpectFullRecord(assigned);
}

TEST(ErrorRecord, MovesItsTextsInsteadOfCopyingThem) {
  Error original;
  original.what = std::string(1000, 'x');
  const char* const text = original.what.data();
  const Error moved(std::move(original));
  EXPECT_EQ(moved.what.data(), text);
}

struct Outcome {
  std::int32_t category;
  std::int64_t code;
  bool failed;

  friend void PrintTo(const Outcome& value, std::ostream* stream) {
    *stream << "category " << value.category << ", code " << value.code;
  }
};

class ErrorRecordFailed : public testing::TestWithParam<Outcome> {};

TEST_P(ErrorRecordFailed, WhenCategoryOrCodeIsNonZero) {
  Error error;
  error.category = static_cast<ErrorCategory>(GetParam().category);
  error.code = GetParam().code;
  EXPECT_EQ(error.Failed(), GetParam().failed);
}

INSTANTIATE_TEST_SUITE_P(, ErrorRecordFailed,
                         testing::Values(Outcome{0, 0, false}, Outcome{0, 1, true}, Outcome{0, -1, true},
                                         Outcome{0, std::int64_t{1} << 32, true}, Outcome{0, INT64_MIN, true},
                                         Outcome{1, 0, true}, Outcome{5, 0, true}, Outcome{-1, 0, true},
                                         Outcome{3, 7, true}));

TEST(ErrorRecord, TextsAloneAreNoFailure) {
  Error error;
  error.what = "note";
  error.type = "label";
  error.origin = "here";
  EXPECT_FALSE(error.Failed());
}

}  // namespace
}  // namespace corvo::test
