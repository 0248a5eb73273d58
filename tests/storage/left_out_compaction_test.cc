// Compaction that the options leave out, because it frees little or takes long.
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <thread>

#include "storage/statement_observer.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using shared::LeftOutCompaction;
using shared::StorageOptions;
using testing::HasSubstr;
using Reason = shared::LeftOutCompaction::Reason;

constexpr const char* kCompact = "VACUUM;";

/// Keeps what was left out last.
class Witness : public shared::StatementObserver {
 public:
  void OnEnd(const shared::StatementRecord& statement) noexcept override {
    left_out = statement.left_out != nullptr ? std::optional(*statement.left_out) : std::nullopt;
    succeeded = !statement.result.Failed();
  }

  std::optional<LeftOutCompaction> left_out;
  bool succeeded = false;
};

class LeftOut : public StorageTest {
 protected:
  /// A database of exactly 100 pages, of which so many are free.
  void CreatePages(int free_pages) {
    Database database(file_);
    database.Run("PRAGMA page_size=4096; CREATE TABLE Kept(v); CREATE TABLE Gone(v)");
    Fill(database, "Gone", free_pages);
    Fill(database, "Kept", 100 - free_pages - kOwnPages);
    database.Run("DELETE FROM Gone");
    ASSERT_EQ(database.Number("PRAGMA page_count"), 100);
    ASSERT_EQ(database.Number("PRAGMA freelist_count"), free_pages);
  }

  Error Compact() {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, kCompact);
  }

  [[nodiscard]] std::int64_t FreePages() const { return Database(file_).Number("PRAGMA freelist_count"); }

  std::shared_ptr<Witness> witness_ = std::make_shared<Witness>();

 private:
  static constexpr int kOwnPages = 3;  // of the schema and of each table

  /// One row, so long that this many pages beside that of the row are full of it.
  static void Fill(Database& database, const std::string& table, int pages) {
    constexpr int kBytesOfAPage = 4092;
    constexpr int kBesideTheRow = 489;
    database.Run("INSERT INTO " + table + " SELECT zeroblob(" + std::to_string(kBytesOfAPage * pages + kBesideTheRow) +
                 ")");
  }

  const shared::StatementObserverScope scope_{witness_};
};

TEST_F(LeftOut, IsNothingUnlessAskedFor) {
  CreatePages(1);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_FALSE(witness_->left_out);
  EXPECT_EQ(FreePages(), 0);
}

TEST_F(LeftOut, IsWhatFreesLessThanTheShare) {
  CreatePages(24);
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  EXPECT_THAT(Compact(), Succeeded());
  ASSERT_TRUE(witness_->left_out && witness_->succeeded);
  EXPECT_EQ(witness_->left_out->reason, Reason::kLittleToFree);
  EXPECT_EQ(witness_->left_out->free_percent, 24);
  EXPECT_EQ(witness_->left_out->bytes, 76 * 4096);
  EXPECT_EQ(FreePages(), 24);
}

TEST_F(LeftOut, IsNotWhatFreesJustTheShareOrMore) {
  for (const int free_pages : {25, 26}) {
    fs::remove(file_);
    CreatePages(free_pages);
    const OptionScope option(&StorageOptions::compact_when_free, 25);
    EXPECT_THAT(Compact(), Succeeded());
    EXPECT_FALSE(witness_->left_out);
    EXPECT_EQ(FreePages(), 0);
  }
}

TEST_F(LeftOut, CountsUnusedBytesWhenToldTo) {
  {
    Database database(file_);
    database.Run("CREATE TABLE Samples(v)");
    database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4000) "
        "INSERT INTO Samples SELECT zeroblob(100) FROM n");
    database.Run("DELETE FROM Samples WHERE rowid % 2 = 0");  // Half of each page, and hardly a page as a whole.
  }
  const auto size = fs::file_size(file_);
  const OptionScope share(&StorageOptions::compact_when_free, 40);
  EXPECT_THAT(Compact(), Succeeded());
  ASSERT_TRUE(witness_->left_out);
  EXPECT_LT(witness_->left_out->free_percent, 5);

  const OptionScope unused(&StorageOptions::count_unused_bytes, true);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_FALSE(witness_->left_out);
  EXPECT_LT(fs::file_size(file_), size);

  EXPECT_THAT(Compact(), Succeeded());
  ASSERT_TRUE(witness_->left_out);
  EXPECT_GT(witness_->left_out->free_percent, 0);
}

TEST_F(LeftOut, IsWhatWouldWriteMoreThanTheLimit) {
  CreatePages(50);
  const OptionScope option(&StorageOptions::compaction_limit, 50 * 4096 - 1);
  EXPECT_THAT(Compact(), Succeeded());
  ASSERT_TRUE(witness_->left_out);
  EXPECT_EQ(witness_->left_out->reason, Reason::kTakesTooLong);
  EXPECT_EQ(witness_->left_out->bytes, 50 * 4096);
  EXPECT_EQ(FreePages(), 50);
}

TEST_F(LeftOut, IsNotWhatWritesJustTheLimit) {
  CreatePages(50);
  const OptionScope option(&StorageOptions::compaction_limit, 50 * 4096);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_FALSE(witness_->left_out);
  EXPECT_EQ(FreePages(), 0);
}

TEST_F(LeftOut, IsAnEmptyFile) {
  std::ofstream(file_).flush();
  const OptionScope option(&StorageOptions::compact_when_free, 1);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_TRUE(witness_->left_out);
  EXPECT_EQ(fs::file_size(file_), 0U);
}

TEST_F(LeftOut, GoesByThePagesAndNotByTablesThatCallThemselvesSo) {
  CreatePages(24);
  Database(file_).Run(
      "CREATE TABLE pragma_freelist_count(freelist_count); INSERT INTO pragma_freelist_count VALUES(100)");
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_TRUE(witness_->left_out);
}

class OtherWords : public LeftOut, public testing::WithParamInterface<const char*> {};

// What a host asks for itself is done.
TEST_P(OtherWords, AreNeverLeftOut) {
  CreatePages(1);
  const OptionScope share(&StorageOptions::compact_when_free, 100);
  const OptionScope limit(&StorageOptions::compaction_limit, 1);
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_THAT(RunSql(storage, GetParam()), Succeeded());
  EXPECT_FALSE(witness_->left_out);
}

INSTANTIATE_TEST_SUITE_P(LeftOut, OtherWords,
                         testing::Values("VACUUM", "vacuum;", "VACUUM main;", "DELETE FROM Kept", "SELECT 1",
                                         "SELECT 'VACUUM;'"));

TEST_F(LeftOut, IsNothingWithinATransactionWhichSqliteRefuses) {
  CreatePages(1);
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "BEGIN"), Succeeded());
  EXPECT_THAT(RunSql(storage, kCompact), FailsWith(SQLITE_ERROR, HasSubstr("within a transaction")));
}

TEST_F(LeftOut, IsForgottenByTheNextStatement) {
  CreatePages(1);
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, kCompact), Succeeded());
  ASSERT_TRUE(witness_->left_out);
  ASSERT_THAT(RunSql(storage, "DELETE FROM Kept"), Succeeded());
  EXPECT_FALSE(witness_->left_out);
}

TEST_F(LeftOut, OfADamagedFileFails) {
  CreatePages(1);
  std::fstream(file_, std::ios::binary | std::ios::in | std::ios::out).seekp(4096) << std::string(100, 'x');
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  EXPECT_THAT(Compact(), FailsWith(SQLITE_CORRUPT, HasSubstr("malformed")));
  EXPECT_FALSE(witness_->left_out);
}

TEST_F(LeftOut, NeedsNoPermissionToWrite) {
  CreatePages(1);
  const OptionScope reading(&StorageOptions::read_only, true);
  EXPECT_TRUE(Compact().Failed());
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_TRUE(witness_->left_out);
}

TEST_F(LeftOut, DoesNotWaitForOneWhoWrites) {
  CreatePages(1);
  Database writer(file_);
  writer.Run("BEGIN IMMEDIATE");
  const OptionScope impatient(&StorageOptions::busy_timeout, std::chrono::milliseconds(0));
  EXPECT_THAT(Compact(), FailsWith(SQLITE_BUSY, HasSubstr("locked")));
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_TRUE(witness_->left_out);
}

TEST_F(LeftOut, WaitsForALockOnReading) {
  CreatePages(1);
  Database writer(file_);
  writer.Run("BEGIN EXCLUSIVE");
  const OptionScope option(&StorageOptions::compact_when_free, 25);
  {
    const OptionScope impatient(&StorageOptions::busy_timeout, std::chrono::milliseconds(0));
    EXPECT_THAT(Compact(), FailsWith(SQLITE_BUSY, HasSubstr("locked")));
    EXPECT_FALSE(witness_->left_out);
  }
  std::jthread release([&writer] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    writer.Run("ROLLBACK");
  });
  const OptionScope patient(&StorageOptions::busy_timeout, std::chrono::minutes(1));
  EXPECT_THAT(Compact(), Succeeded());
  EXPECT_TRUE(witness_->left_out);
}

}  // namespace
}  // namespace corvo::test
