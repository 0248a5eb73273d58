// Copies of databases, for a host that wants to try something out.
#include <sqlite3.h>

#include <fstream>
#include <iterator>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

std::string Bytes(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class Copy : public StorageTest {
 protected:
  ~Copy() override { shared::AllowStatements(); }

  Error CopyNow() {
    TelemetryStorage storage(file_.c_str(), "");
    return storage.CopyTo(copy_.c_str());
  }

  std::string copy_ = dir_ / "Copy.db";
};

TEST_F(Copy, IsTheSamePageByPage) {
  CreateSamples(5000);
  Database(file_).Run("DELETE FROM Samples WHERE id % 2 = 0");
  const std::string before = Bytes(file_);

  EXPECT_THAT(CopyNow(), Succeeded());

  EXPECT_EQ(Database(copy_).Query("SELECT * FROM Samples"), Database(file_).Query("SELECT * FROM Samples"));
  for (const char* fact : {"PRAGMA page_count", "PRAGMA freelist_count", "PRAGMA page_size"}) {
    EXPECT_EQ(Database(copy_).Number(fact), Database(file_).Number(fact)) << fact;
  }
  EXPECT_EQ(Bytes(file_), before);
}

TEST_F(Copy, HoldsWhatStandsInTheLogOnly) {
  CreateSamples(3);
  Database collector(file_);
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO Samples VALUES (4, 'four')");
  EXPECT_THAT(CopyNow(), Succeeded());
  EXPECT_EQ(Database(copy_).Count("Samples"), 4);
}

TEST_F(Copy, IsOneMomentOfADatabaseThatChanges) {
  CreateSamples(3);
  Database collector(file_);
  collector.Run("BEGIN; DELETE FROM Samples");
  EXPECT_THAT(CopyNow(), Succeeded());
  EXPECT_EQ(Database(copy_).Count("Samples"), 3);
}

TEST_F(Copy, IsMadeByAConnectionThatOnlyReads) {
  CreateSamples(3);
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  EXPECT_THAT(CopyNow(), Succeeded());
  EXPECT_EQ(Database(copy_).Count("Samples"), 3);
}

TEST_F(Copy, NeverReplacesAFile) {
  CreateSamples(3);
  std::ofstream(copy_) << "mine";
  EXPECT_TRUE(CopyNow().Failed());
  EXPECT_EQ(Bytes(copy_), "mine");
}

TEST_F(Copy, ReportsALockThatIsHeldTooLong) {
  CreateSamples(3);
  const OptionScope impatient(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(0));
  Database holder(file_);
  holder.Run("BEGIN EXCLUSIVE");
  EXPECT_TRUE(shared::IsBusy(CopyNow()));
}

TEST_F(Copy, EndsWithTheStatementsOfTheProcess) {
  CreateSamples(3);
  shared::InterruptStatements();
  EXPECT_TRUE(shared::IsInterrupted(CopyNow()));
}

TEST_F(Copy, NeedsAPlace) {
  CreateSamples(3);
  copy_ = dir_ / "missing/Copy.db";
  EXPECT_TRUE(shared::IsCannotOpen(CopyNow()));
}

}  // namespace
}  // namespace corvo::test
