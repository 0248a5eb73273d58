#include "host/facts/reading.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/option_scope.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using std::chrono::seconds;
using test::OptionScope;

class ReadingOptionsOfAFile : public testing::Test {
 protected:
  [[nodiscard]] std::chrono::milliseconds Limit(std::uintmax_t bytes) const {
    std::filesystem::resize_file(file_, bytes);
    return ReadingOptions(file_).statement_time_limit;
  }

  void SetUp() override { std::ofstream{file_}.flush(); }

  test::TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "HealthLog.db";
};

TEST_F(ReadingOptionsOfAFile, AreForReadingWithoutTheCheck) {
  EXPECT_TRUE(ReadingOptions(file_).read_only);
  EXPECT_FALSE(ReadingOptions(file_).check_soundness);
}

TEST_F(ReadingOptionsOfAFile, GiveAStatementTheTimeToReadAllOfIt) {
  EXPECT_EQ(Limit(0), seconds(10));
  EXPECT_EQ(Limit(1'000'000'000), seconds(210));
}

TEST_F(ReadingOptionsOfAFile, KeepAShorterLimit) {
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds(20'000));
  EXPECT_EQ(Limit(0), seconds(10));
  EXPECT_EQ(Limit(1'000'000'000), seconds(20));
}

TEST_F(ReadingOptionsOfAFile, TakeOneThatIsNotThereForASmallOne) {
  EXPECT_EQ(ReadingOptions(folder_.Path() / "Cache.db").statement_time_limit, seconds(10));
}

}  // namespace
}  // namespace corvo::telemetry::host
