#include <gtest/gtest.h>
#include <sqlite3.h>

#include "support/case_name.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/comparison.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

class RefusedWrites : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    WriteFixture(fixture_.Path(), {.journal_mode = GetParam(), .rows = {500, 2000}, .databases = {"DeviceUsage"}});
    CopyDatabases(fixture_.Path(), full_);
    ASSERT_TRUE(Succeeded(RunPass(full_)));
    CopyDatabases(fixture_.Path(), work_);
  }

  TempDir fixture_;
  TempDir directory_;
  const fs::path full_ = directory_.Path() / "full";
  const fs::path work_ = directory_.Path() / "work";
};

// The room grows from none to plenty: first nothing can be deleted, then only compaction fails, then nothing does.
TEST_P(RefusedWrites, NoRoomForAFileFailsThePassAndLeavesTheDatabaseWhole) {
  const auto size = fs::file_size(fixture_.Path() / "DeviceUsage.db");
  int failed_deletes = 0;
  int failed_compactions = 0;
  for (std::uintmax_t eighths = 0; eighths <= 8; ++eighths) {
    SCOPED_TRACE(std::to_string(eighths) + " eighths of the database's size");
    CopyDatabases(fixture_.Path(), work_);
    const nlohmann::json record = RunPass(work_, {"--file-size-limit", std::to_string(size * eighths / 8)});
    EXPECT_EQ(Damage(work_), "");
    EXPECT_EQ(MissingRows(work_, full_), 0);
    const bool done = SameRows(work_, full_);
    if (Succeeded(record)) {
      EXPECT_TRUE(done);
    } else {
      // With a WAL the file of its index may be the one without room.
      EXPECT_EQ(record["code"].get<int>() & 0xFF, SQLITE_IOERR) << record;
      EXPECT_EQ(record["what"], "disk I/O error");
      ++(done ? failed_compactions : failed_deletes);
    }
    EXPECT_TRUE(Succeeded(RunPass(work_)));
    EXPECT_TRUE(SameRows(work_, full_));
  }
  EXPECT_GT(failed_deletes, 0);
  EXPECT_GT(failed_compactions, 0);
}

TEST_P(RefusedWrites, DatabaseThatMayOnlyBeReadFailsThePassAndKeepsItsRows) {
  const fs::path file = work_ / "DeviceUsage.db";
  const fs::perms writable = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  fs::permissions(file, writable, fs::perm_options::remove);
  fs::permissions(work_, writable, fs::perm_options::remove);
  const nlohmann::json record = RunPass(work_, {"--without-privileges"});
  fs::permissions(work_, fs::perms::owner_write, fs::perm_options::add);
  fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);

  EXPECT_EQ(record["category"], "EC_Custom") << record;
  EXPECT_EQ(record["code"].get<int>() & 0xFF, SQLITE_READONLY) << record;
  EXPECT_EQ(record["what"], "attempt to write a readonly database");
  EXPECT_EQ(Damage(work_), "");
  EXPECT_TRUE(SameRows(work_, fixture_.Path()));
}

INSTANTIATE_TEST_SUITE_P(JournalModes, RefusedWrites, testing::Values("DELETE", "WAL"), CaseName());

}  // namespace
}  // namespace corvo::test
