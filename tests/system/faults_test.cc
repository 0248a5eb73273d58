#include <gtest/gtest.h>
#include <sqlite3.h>

#include <ostream>

#include "support/case_name.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/comparison.h"
#include "system/faulty_vfs.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

struct FaultCase {
  const char* name;
  const char* journal_mode;
  Fault fault;
  std::string failing;  ///< which of the faults fail the pass: all, some or none
};

std::ostream& operator<<(std::ostream& stream, const FaultCase& fault) { return stream << fault.name; }

std::string Share(std::int64_t failed, std::int64_t all) {
  return failed == all ? "all" : failed > 0 ? "some" : "none";
}

std::string Text(const Fault& fault) {
  return fault.operation + "," + std::to_string(fault.code) + "," + std::to_string(fault.first) + "," +
         (fault.lasting ? "1" : "0");
}

int CodeOf(const nlohmann::json& record) { return record.is_null() ? kKill : record.at("code").get<int>(); }

class FaultyFiles : public testing::TestWithParam<FaultCase> {
 protected:
  void SetUp() override {
    WriteFixture(fixture_.Path(),
                 {.journal_mode = GetParam().journal_mode, .rows = {60, 60}, .databases = {"DeviceUsage"}});
    CopyDatabases(fixture_.Path(), full_);
    ASSERT_TRUE(Succeeded(RunPass(full_)));
  }

  /// One pass with the fault; false when it was not met. The record is null when the fault has killed the pass.
  bool PassMeets(const Fault& fault, nlohmann::json& record) const {
    CopyDatabases(fixture_.Path(), work_);
    PassRunner runner(work_, {"--fault", Text(fault)});
    record = runner.Run();
    return record.is_null() || runner.FaultsFired() > 0;
  }

  TempDir fixture_;
  TempDir directory_;
  const fs::path full_ = directory_.Path() / "full";
  const fs::path work_ = directory_.Path() / "work";
};

// Every call of the operation fails, or is the last of its process, in a pass of its own, until a pass goes through
// without having met the fault. With a WAL the changes are safe before they reach the database file: what fails after
// that is made good later and fails nothing.
TEST_P(FaultyFiles, FailThePassOrHarmNothingAndLeaveTheDatabaseWhole) {
  Fault fault = GetParam().fault;
  nlohmann::json record;
  std::int64_t failed = 0;
  for (; PassMeets(fault, record); ++fault.first) {
    SCOPED_TRACE(Text(fault) + " " + record.dump());
    ASSERT_EQ(Damage(work_), "");
    ASSERT_EQ(MissingRows(work_, full_), 0);
    if (!record.is_null() && Succeeded(record)) {
      ASSERT_TRUE(SameRows(work_, full_));
    } else {
      ASSERT_EQ(CodeOf(record), fault.code);
      ++failed;
    }
    ASSERT_TRUE(Succeeded(RunPass(work_)));
    ASSERT_TRUE(SameRows(work_, full_));
  }
  const std::int64_t met = fault.first - 1;
  EXPECT_GT(met, 0);
  EXPECT_EQ(Share(failed, met), GetParam().failing) << failed << " of " << met;
  EXPECT_TRUE(Succeeded(record)) << "a pass without the fault";
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FaultyFiles,
    testing::Values(FaultCase{"KilledAtWriteWithRollbackJournal", "DELETE", {"write", kKill}, "all"},
                    FaultCase{"KilledAtSyncWithRollbackJournal", "DELETE", {"sync", kKill}, "all"},
                    FaultCase{"KilledAtTruncateWithRollbackJournal", "DELETE", {"truncate", kKill}, "all"},
                    FaultCase{"KilledAtDeleteWithRollbackJournal", "DELETE", {"delete", kKill}, "all"},
                    FaultCase{"KilledAtWriteWithWal", "WAL", {"write", kKill}, "all"},
                    FaultCase{"KilledAtSyncWithWal", "WAL", {"sync", kKill}, "all"},
                    FaultCase{"KilledAtTruncateWithWal", "WAL", {"truncate", kKill}, "all"},
                    FaultCase{"KilledAtDeleteWithWal", "WAL", {"delete", kKill}, "all"},
                    FaultCase{"WriteErrorWithRollbackJournal", "DELETE", {"write", SQLITE_IOERR_WRITE}, "all"},
                    FaultCase{"WriteErrorWithWal", "WAL", {"write", SQLITE_IOERR_WRITE}, "some"},
                    FaultCase{"FullDiskWithRollbackJournal", "DELETE", {"write", SQLITE_FULL, 1, true}, "all"},
                    FaultCase{"FullDiskWithWal", "WAL", {"write", SQLITE_FULL, 1, true}, "some"},
                    FaultCase{"SyncErrorWithRollbackJournal", "DELETE", {"sync", SQLITE_IOERR_FSYNC}, "all"},
                    FaultCase{"SyncErrorWithWal", "WAL", {"sync", SQLITE_IOERR_FSYNC}, "some"},
                    FaultCase{"TruncateErrorWithRollbackJournal", "DELETE", {"truncate", SQLITE_IOERR_TRUNCATE}, "all"},
                    FaultCase{"TruncateErrorWithWal", "WAL", {"truncate", SQLITE_IOERR_TRUNCATE}, "none"},
                    FaultCase{"DeleteErrorWithRollbackJournal", "DELETE", {"delete", SQLITE_IOERR_DELETE}, "all"},
                    FaultCase{"DeleteErrorWithWal", "WAL", {"delete", SQLITE_IOERR_DELETE}, "none"}),
    CaseName());

}  // namespace
}  // namespace corvo::test
