#include "host/show/advice.h"

#include <gmock/gmock.h>

#include <ostream>

#include "host/report_samples.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;
using testing::Not;

common::Error StorageResult(int code) { return test::StorageFailure(code, ""); }

struct Case {
  int code;
  const char* advice;

  friend void PrintTo(const Case& value, std::ostream* stream) { *stream << "code " << value.code; }
};

class AdviceOnStorage : public testing::TestWithParam<Case> {};

TEST_P(AdviceOnStorage, FitsTheKindOfFailure) {
  EXPECT_THAT(Advice(StorageResult(GetParam().code)), HasSubstr(GetParam().advice));
}

TEST_P(AdviceOnStorage, LooksAtTheLowByteOfExtendedCodes) {
  EXPECT_EQ(Advice(StorageResult(GetParam().code + 256 * 3)), Advice(StorageResult(GetParam().code)));
}

INSTANTIATE_TEST_SUITE_P(Kinds, AdviceOnStorage,
                         testing::Values(Case{5, "Another program"}, Case{6, "Another program"}, Case{8, "this user"},
                                         Case{14, "this user"}, Case{11, "damaged"}, Case{26, "encrypted"},
                                         Case{13, "space"}, Case{10, "space"}, Case{1, "knows no remedy"},
                                         Case{19, "constraint or a trigger"}, Case{9, "--time-limit"},
                                         Case{7, "--memory-limit"}, Case{18, "larger than"},
                                         Case{23, "no collector should make"}));

TEST(Advice, OnADamagedFileSavesItsRowsBeforeItIsMovedAway) {
  const std::string advice = Advice(StorageResult(11));
  EXPECT_LT(advice.find("Keep a copy"), advice.find(".recover"));
  EXPECT_LT(advice.find(".recover"), advice.find("move the file away"));
}

TEST(Advice, PointsToTheLogWhenNothingBetterIsKnown) {
  EXPECT_THAT(Advice(common::MakeErrorFromException(nullptr)), HasSubstr("--log-level debug"));
}

TEST(Advice, OnATextThatIsTooLongPromisesNothingOfTheLog) {
  EXPECT_THAT(Advice(StorageResult(18)), Not(HasSubstr("--log-level")));
}

using Cause = Problem::Cause;

TEST(AdviceByCause, ComesBeforeThatOnTheRecord) {
  const auto advice = [](Problem::Kind kind, Cause cause) {
    return Advice(Problem{kind, "", StorageResult(14), cause});
  };
  EXPECT_THAT(advice(Problem::Kind::kCannotOpen, Cause::kOther), HasSubstr("ordinary files"));
  EXPECT_THAT(advice(Problem::Kind::kCannotOpen, Cause::kDanglingLink), HasSubstr("remove the link"));
  EXPECT_THAT(advice(Problem::Kind::kCannotOpen, Cause::kHalfChanged), HasSubstr("puts it right"));
  EXPECT_THAT(advice(Problem::Kind::kCannotOpen, Cause::kReadOnlyFileSystem), HasSubstr("file system writable"));
  EXPECT_THAT(advice(Problem::Kind::kCannotOpen, Cause::kNoFileHandles), HasSubstr("more files open"));
}

TEST(AdviceByCause, NamesAnotherPlaceOnlyForWhatCanBeElsewhere) {
  EXPECT_THAT(Advice(Problem{Problem::Kind::kNoRoom, "", {}}), HasSubstr("SQLITE_TMPDIR"));
  EXPECT_THAT(Advice(Problem{Problem::Kind::kNoRoom, "", {}, Cause::kNoRoomBeside}), Not(HasSubstr("SQLITE_TMPDIR")));
}

TEST(AdviceByCause, IsNoneWhereThereIsNothingToDoButToRunAgain) {
  EXPECT_EQ(Advice(Problem{Problem::Kind::kFailed, "another program took it away", {}}), "");
  EXPECT_EQ(Advice(Problem{Problem::Kind::kNotReached, "", {}}), "");
}

}  // namespace
}  // namespace corvo::telemetry::host
