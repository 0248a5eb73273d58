// The time limit of a statement in a process that was forked from one that has used it.
#include <sqlite3.h>

#include <cstdlib>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using TimeLimit = StorageTest;

TEST_F(TimeLimit, DoesNotKeepAForkedProcessFromItsEnd) {
  CreateSamples(3);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::seconds(10));
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");

  EXPECT_EXIT(std::exit(0), testing::ExitedWithCode(0), "");
}

TEST_F(TimeLimit, IsKeptInAForkedProcess) {
  CreateSamples(3);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds(50));
  TelemetryStorage former(file_.c_str(), "");
  ASSERT_THAT(RunSql(former, "SELECT 1"), Succeeded());
  const auto query_without_end = [this] {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT COUNT(*) FROM n");
  };

  EXPECT_EXIT(std::exit(static_cast<int>(query_without_end().code)), testing::ExitedWithCode(SQLITE_INTERRUPT), "");
}

}  // namespace
}  // namespace corvo::test
