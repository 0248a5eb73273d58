// A program of its own, which sets nothing: what a storage does in a process whose host says nothing.
#include <sqlite3.h>

#include <optional>

#include "storage/storage_fixture.h"
#include "support/environment.h"

namespace corvo::test {
namespace {

class Defaults : public testing::Test {
 protected:
  TempDir dir_;
  std::string file_ = dir_ / "Test.db";
};

TEST_F(Defaults, WaitFiveSecondsForALock) {
  Database(file_).Run("CREATE TABLE T(v)");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(shared::GetStorageOptions().busy_timeout, std::chrono::seconds(5));
  EXPECT_EQ(ReadValue(storage, "PRAGMA busy_timeout"), "5000");
}

TEST_F(Defaults, LimitNoStatement) {
  EXPECT_EQ(shared::GetStorageOptions().statement_time_limit, std::chrono::milliseconds(0));
}

TEST_F(Defaults, LetNothingWriteToADamagedFile) { EXPECT_TRUE(shared::GetStorageOptions().check_soundness); }

TEST_F(Defaults, RunTriggersAndViews) { EXPECT_TRUE(shared::GetStorageOptions().triggers_and_views); }

TEST_F(Defaults, CompactWhateverItFrees) {
  EXPECT_EQ(shared::GetStorageOptions().compact_when_free, 0);
  EXPECT_EQ(shared::GetStorageOptions().compaction_limit, 0);
  EXPECT_FALSE(shared::GetStorageOptions().count_unused_bytes);
}

TEST_F(Defaults, OpenEveryDatabaseForWriting) {
  Database(file_).Run("CREATE TABLE T(v)");
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(shared::GetStorageOptions().databases, std::nullopt);
  EXPECT_FALSE(shared::GetStorageOptions().read_only);
  EXPECT_THAT(RunSql(storage, "INSERT INTO T VALUES(1)"), Succeeded());
}

TEST_F(Defaults, LimitNoMemory) {
  EXPECT_EQ(shared::GetStorageOptions().memory_limit, 0);
  EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 0);
}

TEST_F(Defaults, LookForDatabasesWhereTheEnvironmentSays) {
  SetEnvironment("CORVO_TELEMETRY_DATA_DIR", dir_.Path().string().c_str());

  EXPECT_EQ(shared::GetDataDirectory(), (dir_.Path() / "").string());

  SetEnvironment("CORVO_TELEMETRY_DATA_DIR", nullptr);
  EXPECT_NE(shared::GetDataDirectory(), (dir_.Path() / "").string());
}

}  // namespace
}  // namespace corvo::test
