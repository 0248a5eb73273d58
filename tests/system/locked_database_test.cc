#include <gtest/gtest.h>
#include <sqlite3.h>

#include "support/case_name.h"
#include "support/database.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/comparison.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

struct Lock {
  const char* name;
  const char* journal_mode;
  const char* sql;
};

std::ostream& operator<<(std::ostream& stream, const Lock& lock) { return stream << lock.name; }

class LockedDatabase : public testing::TestWithParam<Lock> {
 protected:
  TempDir fixture_;
  TempDir directory_;
  const fs::path full_ = directory_.Path() / "full";
  const fs::path work_ = directory_.Path() / "work";
};

// The databases come in the order of their names: the first is cleaned before the lock is met, the last never visited.
TEST_P(LockedDatabase, EndsThePassWithSqlitesOwnRecordAndLosesNothing) {
  WriteFixture(fixture_.Path(),
               {.journal_mode = GetParam().journal_mode, .databases = {"Cache", "DeviceUsage", "HealthLog"}});
  CopyDatabases(fixture_.Path(), full_);
  ASSERT_TRUE(Succeeded(RunPass(full_)));
  CopyDatabases(fixture_.Path(), work_);
  nlohmann::json record;
  {
    Database collector(work_ / "DeviceUsage.db");
    collector.Run(GetParam().sql);
    record = RunPass(work_, {"--busy-timeout", "50"});
  }

  EXPECT_EQ(record["category"], "EC_Custom");
  EXPECT_EQ(record["code"], SQLITE_BUSY);
  EXPECT_EQ(record["what"].get<std::string>().substr(0, 18), "database is locked");
  EXPECT_EQ(Damage(work_), "");
  EXPECT_TRUE(SameRowsIn("Cache.db", work_, full_));
  EXPECT_TRUE(SameRowsIn("DeviceUsage.db", work_, fixture_.Path()));
  EXPECT_TRUE(SameRowsIn("HealthLog.db", work_, fixture_.Path()));
  EXPECT_TRUE(Succeeded(RunPass(work_)));
  EXPECT_TRUE(SameRows(work_, full_));
}

INSTANTIATE_TEST_SUITE_P(Locks, LockedDatabase,
                         testing::Values(Lock{"WriterWithRollbackJournal", "DELETE", "BEGIN IMMEDIATE"},
                                         Lock{"SoleUserWithRollbackJournal", "DELETE", "BEGIN EXCLUSIVE"},
                                         Lock{"ReaderWithRollbackJournal", "DELETE",
                                              "BEGIN; SELECT COUNT(*) FROM PowerEvents"},
                                         Lock{"WriterWithWal", "WAL", "BEGIN IMMEDIATE"}),
                         CaseName());

}  // namespace
}  // namespace corvo::test
