// A program of its own: it replaces the function that makes a record's text, to see when one is made.
#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "contracts/catalogue.h"
#include "storage/storage_options.h"
#include "support/kept_options.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

int texts_made = 0;

}  // namespace
}  // namespace corvo::test

namespace corvo::telemetry::common {

std::string ErrorText(const Error& /*error*/) {
  ++test::texts_made;
  return "record";
}

std::int32_t ErrorToJson(const Error& /*error*/, char* buffer) {
  ++test::texts_made;
  if (buffer != nullptr) {
    *buffer = '\0';
  }
  return 1;
}

}  // namespace corvo::telemetry::common

namespace corvo::test {
namespace {

/// What the records of a whole pass cost.
class ReadSourceFormatting : public EngineTest {
 protected:
  ReadSourceFormatting() { texts_made = 0; }

  /// A table without a time fails the pass, which two records tell.
  void CreateFailingDatabase() const { Open("DeviceUsage").Run("CREATE TABLE PowerEvents (moment TEXT)"); }

  /// A name of this length fails the driver itself, which two records tell.
  void UseImpossibleDirectory() const { shared::SetDataDirectory(directory / std::string(300, 'x')); }

  /// How many texts are made in a pass.
  int TextsOfAPass() {
    static_cast<void>(collector.ReadSource());
    return texts_made;
  }

  DataCleanup collector;
  KeptOptions kept{telemetry::contracts::ContractCatalogue()};
};

TEST_F(ReadSourceFormatting, NothingIsFormattedWithoutALogger) { EXPECT_EQ(TextsOfAPass(), 0); }

TEST_F(ReadSourceFormatting, NothingIsFormattedOfAFailureWithoutALogger) {
  CreateFailingDatabase();
  EXPECT_EQ(TextsOfAPass(), 0);
}

TEST_F(ReadSourceFormatting, NothingIsFormattedOfAnExceptionWithoutALogger) {
  UseImpossibleDirectory();
  EXPECT_EQ(TextsOfAPass(), 0);
}

TEST_F(ReadSourceFormatting, ResultIsFormattedForALoggerThatAdmitsInfo) {
  const LogCapture log(plog::info);
  EXPECT_EQ(TextsOfAPass(), 1);
}

TEST_F(ReadSourceFormatting, ResultIsNotFormattedForALoggerThatAdmitsErrorsOnly) {
  const LogCapture log(plog::error);
  EXPECT_EQ(TextsOfAPass(), 0);
}

TEST_F(ReadSourceFormatting, FailureAloneIsFormattedForALoggerThatAdmitsErrorsOnly) {
  CreateFailingDatabase();
  const LogCapture log(plog::error);
  EXPECT_EQ(TextsOfAPass(), 1);
}

TEST_F(ReadSourceFormatting, ExceptionIsNotFormattedForALoggerThatAdmitsFatalOnly) {
  UseImpossibleDirectory();
  const LogCapture log(plog::fatal);
  EXPECT_EQ(TextsOfAPass(), 0);
}

}  // namespace
}  // namespace corvo::test
