#include "host/show/advice.h"

#include <gmock/gmock.h>

#include <ostream>

#include "host/report_samples.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;

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
                                         Case{14, "this user"}, Case{11, "damaged"}, Case{26, "damaged"},
                                         Case{13, "space"}, Case{10, "space"}, Case{1, "log"}, Case{9, "--time-limit"},
                                         Case{7, "--memory-limit"}, Case{18, "larger than"},
                                         Case{23, "no collector should make"}));

TEST(Advice, OnADamagedFileSavesItsRowsBeforeItIsMovedAway) {
  const std::string advice = Advice(StorageResult(11));
  EXPECT_LT(advice.find("Keep a copy"), advice.find(".recover"));
  EXPECT_LT(advice.find(".recover"), advice.find("move it away"));
}

TEST(Advice, PointsToTheLogWhenNothingBetterIsKnown) {
  EXPECT_THAT(Advice(common::MakeErrorFromException(nullptr)), HasSubstr("--log-level"));
}

}  // namespace
}  // namespace corvo::telemetry::host
