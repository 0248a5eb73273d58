// A host that only looks.
#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <memory>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::_;

class ReadingOnly : public StorageTest, public testing::WithParamInterface<const char*> {
 protected:
  ReadingOnly() {
    CreateSamples(3);
    Database(file_).Run(std::string("PRAGMA journal_mode=") + GetParam());
  }

  /// Each file of the folder with its time of last change.
  [[nodiscard]] std::map<std::string, fs::file_time_type> Files() const {
    std::map<std::string, fs::file_time_type> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir_.Path())) {
      files[entry.path().filename().string()] = entry.last_write_time();
    }
    return files;
  }

  OptionScope reading_{&shared::StorageOptions::read_only, true};
};

TEST_P(ReadingOnly, ReadsWithoutATraceInTheFolder) {
  const auto before = Files();
  {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
    EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM dbstat WHERE name = 'Samples'"), "1");
  }
  EXPECT_EQ(Files(), before);
}

TEST_P(ReadingOnly, RefusesToWrite) {
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_TRUE(shared::IsReadOnly(RunSql(storage, "DELETE FROM Samples")));
  EXPECT_TRUE(shared::IsReadOnly(RunSql(storage, "VACUUM")));
  EXPECT_EQ(Database(file_).Count("Samples"), 3);
}

TEST_P(ReadingOnly, SeesWhatACollectorHasCommittedMeanwhile) {
  Database collector(file_);
  collector.Run("INSERT INTO Samples VALUES (4, 'four')");
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "4");
  collector.Run("INSERT INTO Samples VALUES (5, 'five')");
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "5");
}

TEST_P(ReadingOnly, KeepsOneViewWithinATransaction) {
  Database(file_).Run("PRAGMA journal_mode=WAL");
  Database collector(file_);
  collector.Run("INSERT INTO Samples VALUES (4, 'four')");
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "BEGIN"), Succeeded());
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "4");
  collector.Run("INSERT INTO Samples VALUES (5, 'five')");
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "4");
  EXPECT_THAT(RunSql(storage, "ROLLBACK"), Succeeded());
}

TEST_P(ReadingOnly, FindsDamageAsOthersDo) {
  Database(file_).Run(
      "CREATE INDEX ByValue ON Samples(v); PRAGMA writable_schema=ON; "
      "UPDATE sqlite_schema SET rootpage = 2 WHERE name = 'ByValue'");
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_TRUE(shared::IsDamaged(RunSql(storage, "BEGIN IMMEDIATE")));
}

INSTANTIATE_TEST_SUITE_P(JournalModes, ReadingOnly, testing::Values("DELETE", "WAL"), CaseName());

class ReadingWithoutLog : public StorageTest {};

TEST_F(ReadingWithoutLog, SaysSoWhenSomebodyBeginsToWriteMeanwhile) {
  CreateSamples(3);
  Database(file_).Run("PRAGMA journal_mode=WAL");
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");

  Database collector(file_);
  collector.Run("INSERT INTO Samples VALUES (4, 'four')");

  EXPECT_TRUE(shared::IsBusy(RunSql(storage, "SELECT COUNT(*) FROM Samples")));
  TelemetryStorage next(file_.c_str(), "");
  EXPECT_EQ(ReadValue(next, "SELECT COUNT(*) FROM Samples"), "4");
}

// Reading would make the index.
TEST_F(ReadingWithoutLog, RefusesALogThatLostItsIndex) {
  CreateSamples(3);
  Database collector(file_);
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO Samples VALUES (4, 'four')");
  const std::string left = dir_ / "left.db";
  fs::copy_file(file_, left);
  fs::copy_file(std::string(file_) + "-wal", left + "-wal");
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  {
    TelemetryStorage storage(left.c_str(), "");
    EXPECT_TRUE(shared::IsCannotOpen(RunSql(storage, "SELECT COUNT(*) FROM Samples")));
  }
  EXPECT_FALSE(fs::exists(left + "-shm"));
}

TEST_F(ReadingWithoutLog, TakesNamesThatMeanSomethingInAUri) {
  file_ = dir_ / "a#b%20c.db";
  CreateSamples(3);
  Database(file_).Run("PRAGMA journal_mode=WAL");
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
}

TEST_F(ReadingWithoutLog, MakesNoDatabase) {
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_THAT(storage.GetLastError(), FailsWith(SQLITE_CANTOPEN, _));
  EXPECT_FALSE(fs::exists(file_));
}

}  // namespace
}  // namespace corvo::test
