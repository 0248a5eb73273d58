#include <gmock/gmock.h>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

/// A database of one table with one expired row, whose deletion costs more than a bound allows.
class RunBounds : public RunTest {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(data_);
    Make("CREATE TABLE CollectorCache (time TEXT, text TEXT)");
  }

  void Make(const std::string& sql) const { Database(File("Cache.db")).Run(sql); }

  void InsertExpiredRow(const std::string& text) const {
    Make("INSERT INTO CollectorCache VALUES ('2000-01-01T00:00:00+00:00', " + text + ")");
  }

  [[nodiscard]] std::int64_t Rows() const { return Database(File("Cache.db")).Count("CollectorCache"); }

  void ExpectKept(const HostRun& run, const std::string& option) const {
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_THAT(run.out, HasSubstr("Cleaned 0 of 1 database; not cleaned: Cache ("));
    EXPECT_THAT(run.out, HasSubstr(option));
    EXPECT_EQ(Rows(), 1);
  }
};

TEST_F(RunBounds, TimeOfAStatementIsLimited) {
  Make(
      "CREATE TRIGGER Endless BEFORE DELETE ON CollectorCache BEGIN SELECT COUNT(*) FROM "
      "(WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n); END");
  InsertExpiredRow("''");
  ExpectKept(Run({"--time-limit", "1"}), "--time-limit");
}

TEST_F(RunBounds, MemoryOfSqliteIsLimited) {
  Make("CREATE INDEX ByText ON CollectorCache (text)");
  InsertExpiredRow("hex(zeroblob(4000000))");
  ExpectKept(Run({"--memory-limit", "6"}), "--memory-limit");
}

TEST_F(RunBounds, MemoryIsEnoughByDefault) {
  Make("CREATE INDEX ByText ON CollectorCache (text)");
  InsertExpiredRow("hex(zeroblob(4000000))");
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 0) << run.out;
  EXPECT_EQ(Rows(), 0);
}

TEST_F(RunBounds, WaitForALockIsLimited) {
  InsertExpiredRow("''");
  Database other(File("Cache.db"));
  other.Run("BEGIN IMMEDIATE");
  const HostRun run = Run({"--busy-timeout", "0"});
  other.Run("ROLLBACK");
  ExpectKept(run, "Another program holds the database");
}

TEST_F(RunBounds, ZeroLiftsALimit) {
  InsertExpiredRow("''");
  EXPECT_EQ(Run({"--time-limit", "0", "--memory-limit", "0"}).exit_code, 0);
  EXPECT_EQ(Rows(), 0);
}

TEST_F(RunBounds, OutOfRangeAreExplainedWithTheRange) {
  const HostRun run = Run({"--time-limit", "86401"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_THAT(run.err, HasSubstr("--time-limit"));
  EXPECT_THAT(run.err, HasSubstr("not in range"));
  EXPECT_THAT(run.err, HasSubstr("86400"));
}

}  // namespace
}  // namespace corvo::test
