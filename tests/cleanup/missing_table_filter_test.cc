#include <gtest/gtest.h>

#include <string>

#include "cleanup/engine_fixture.h"
#include "cleanup/operation.h"

namespace corvo::telemetry::cleanup {
namespace {

using common::Error;
using test::Succeeded;

Error Failure(const std::string& what) {
  Error error;
  error.category = common::EC_Custom;
  error.code = 1;
  error.what = what;
  error.type = "sqlite3";
  error.origin = "somewhere";
  return error;
}

class ForgivenText : public testing::TestWithParam<std::string> {};

TEST_P(ForgivenText, MakesTheRecordASuccess) {
  Error error = Failure(GetParam());
  ClearNoSuchTableError(error);
  EXPECT_THAT(error, Succeeded());
}

INSTANTIATE_TEST_SUITE_P(Texts, ForgivenText,
                         testing::Values("no such table: Samples",
                                         "no such table:", "SQL logic error: no such table: Samples (1)"));

class KeptText : public testing::TestWithParam<std::string> {};

TEST_P(KeptText, LeavesTheRecordAsItWas) {
  const Error before = Failure(GetParam());
  Error error = before;
  ClearNoSuchTableError(error);
  EXPECT_EQ(error.category, before.category);
  EXPECT_EQ(error.code, before.code);
  EXPECT_EQ(error.what, before.what);
  EXPECT_EQ(error.type, before.type);
  EXPECT_EQ(error.origin, before.origin);
}

INSTANTIATE_TEST_SUITE_P(Texts, KeptText,
                         testing::Values("No such table: Samples", "NO SUCH TABLE: Samples", "no such table Samples",
                                         "no such table", "no such column: time", "n", "",
                                         // What follows a zero byte is not part of the message.
                                         std::string("other\0no such table: Samples", 28)));

TEST(ClearNoSuchTableError, ClearsAFailureThatHasOnlyACategory) {
  Error error = Failure("no such table: Samples");
  error.code = 0;
  ClearNoSuchTableError(error);
  EXPECT_THAT(error, Succeeded());
}

TEST(ClearNoSuchTableError, ClearsAFailureThatHasOnlyACode) {
  Error error = Failure("no such table: Samples");
  error.category = common::EC_NoError;
  ClearNoSuchTableError(error);
  EXPECT_THAT(error, Succeeded());
}

TEST(ClearNoSuchTableError, NeverTouchesASuccess) {
  Error error;
  error.what = "no such table: Samples";
  ClearNoSuchTableError(error);
  EXPECT_EQ(error.what, "no such table: Samples");
}

}  // namespace
}  // namespace corvo::telemetry::cleanup
