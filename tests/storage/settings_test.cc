// Settings for the whole process.
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using Settings = StorageTest;

TEST_F(Settings, DataDirectoryIsAbsoluteAndEndsWithASeparator) {
  shared::SetDataDirectory("relative");

  const std::filesystem::path expected = std::filesystem::current_path() / "relative" / "";
  EXPECT_EQ(shared::GetDataDirectory(), expected.string());
}

TEST_F(Settings, DataDirectoryDoesNotFollowTheCurrentDirectory) {
  const std::filesystem::path before = std::filesystem::current_path();
  shared::SetDataDirectory("relative");

  std::filesystem::current_path(dir_.Path());
  const std::string directory = shared::GetDataDirectory();
  std::filesystem::current_path(before);

  EXPECT_EQ(directory, (before / "relative" / "").string());
}

TEST_F(Settings, DataDirectoryKeepsOneSeparator) {
  const std::string with_separator = (dir_.Path() / "").string();

  shared::SetDataDirectory(with_separator);

  EXPECT_EQ(shared::GetDataDirectory(), with_separator);
}

TEST_F(Settings, AreReadWhenAStorageIsConstructed) {
  CreateSamples(1);
  const OptionScope first(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(1234));
  TelemetryStorage storage(file_.c_str(), "");
  const OptionScope second(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(1));

  EXPECT_EQ(ReadValue(storage, "PRAGMA busy_timeout"), "1234");
}

TEST_F(Settings, WaitFiveSecondsForALockByDefault) {
  CreateSamples(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(shared::StorageOptions().busy_timeout, std::chrono::seconds(5));
  EXPECT_EQ(ReadValue(storage, "PRAGMA busy_timeout"), "5000");
}

class BusyTimeouts : public StorageTest,
                     public testing::WithParamInterface<std::pair<std::chrono::milliseconds, const char*>> {};

TEST_P(BusyTimeouts, StayWithinSqlitesRange) {
  CreateSamples(1);
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, GetParam().first);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "PRAGMA busy_timeout"), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Settings, BusyTimeouts,
                         testing::Values(std::pair(std::chrono::milliseconds::min(), "0"),
                                         std::pair(std::chrono::milliseconds(-1), "0"),
                                         std::pair(std::chrono::milliseconds::max(), "2147483647")));

TEST_F(Settings, LimitNoStatementAndGuardCompactionByDefault) {
  EXPECT_EQ(shared::StorageOptions().statement_time_limit, std::chrono::milliseconds(0));
  EXPECT_TRUE(shared::StorageOptions().check_soundness);
}

}  // namespace
}  // namespace corvo::test
