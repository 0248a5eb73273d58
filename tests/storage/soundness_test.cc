// What is remembered of a file between the statements of a visit.
#include <sqlite3.h>

#include <fstream>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDelete = "DELETE FROM Samples WHERE id = 1";

class Soundness : public StorageTest {
 protected:
  Soundness() {
    CreateSamples(2000);
    Database(file_).Run("CREATE INDEX ByValue ON Samples(v)");
  }

  /// A first statement, which looks through the file.
  void Visit() {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, kDelete), Succeeded());
  }

  /// Rows without entries in the index, made by transactions of SQLite.
  static void SpoilIndex(const std::string& file) {
    Database database(file);
    const std::string index = database.Query("SELECT sql FROM sqlite_schema WHERE name = 'ByValue'").at(0).at(0);
    const std::string root = database.Query("SELECT rootpage FROM sqlite_schema WHERE name = 'ByValue'").at(0).at(0);
    database.Run("PRAGMA writable_schema=ON; DELETE FROM sqlite_schema WHERE name = 'ByValue'");
    Database(file).Run("INSERT INTO Samples(v) VALUES('without an entry')");
    Database(file).Run("PRAGMA writable_schema=ON; INSERT INTO sqlite_schema VALUES('index', 'ByValue', 'Samples', " +
                       root + ", '" + index + "')");
  }

  /// Zeros in the middle of the file, behind SQLite's back.
  void OverwriteAPage() {
    std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(3 * 4096);
    stream << std::string(4096, '\0');
    stream.close();
    // The clock of files is coarse.
    fs::last_write_time(file_, fs::last_write_time(file_) + std::chrono::seconds(1));
  }

  Error Delete() {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, "DELETE FROM Samples WHERE id = 2");
  }
};

// SQLite 3.44 and later count for themselves, in words of their own.
TEST_F(Soundness, CountsTheEntriesOfEachIndex) {
  SpoilIndex(file_);

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, testing::AllOf(StartsWith("database disk image is malformed: "),
                                                                 HasSubstr("index ByValue"))));

  EXPECT_EQ(Database(file_).Query("SELECT COUNT(*) FROM Samples NOT INDEXED").at(0).at(0), "2001");
}

TEST_F(Soundness, IsRememberedThroughTransactionsOfOtherPrograms) {
  Visit();
  SpoilIndex(file_);

  EXPECT_THAT(Delete(), Succeeded()) << "checked again, the file would be refused";
}

TEST_F(Soundness, OfAFileThatWasReplacedIsNotRemembered) {
  fs::copy_file(file_, dir_ / "Other.db");
  SpoilIndex(dir_ / "Other.db");
  Visit();
  fs::rename(dir_ / "Other.db", file_);

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, HasSubstr("index ByValue")));
}

TEST_F(Soundness, OfAFileThatWasCutIsNotRemembered) {
  Visit();
  fs::resize_file(file_, fs::file_size(file_) - 4096);

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, StartsWith("database disk image is malformed")));
}

TEST_F(Soundness, OfAFileThatWasChangedOtherThanBySqliteIsNotRemembered) {
  Visit();
  OverwriteAPage();

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, StartsWith("database disk image is malformed: ")));
}

TEST_F(Soundness, OfADamagedFileIsSeenAgainOnceItWasMended) {
  fs::copy_file(file_, dir_ / "Kept.db");
  OverwriteAPage();
  ASSERT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, testing::_));
  fs::rename(dir_ / "Kept.db", file_);

  EXPECT_THAT(Delete(), Succeeded());
}

TEST_F(Soundness, OfADamagedFileIsSeenAgainOnceItWasMendedInItsPlace) {
  fs::copy_file(file_, dir_ / "Kept.db");
  OverwriteAPage();
  ASSERT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, testing::_));
  fs::copy_file(dir_ / "Kept.db", file_, fs::copy_options::overwrite_existing);
  fs::last_write_time(file_, fs::last_write_time(file_) + std::chrono::seconds(3));

  EXPECT_THAT(Delete(), Succeeded());
}

// Writers that do not keep the size in the header leave the number beside it as it was.
TEST_F(Soundness, OfAFileWhoseHeaderIsOfSeveralMomentsIsNotRemembered) {
  Visit();
  SpoilIndex(file_);
  constexpr int kValidFor = 92;
  std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
  stream.seekp(kValidFor);
  stream << std::string(4, '\0');
  stream.close();
  fs::last_write_time(file_, fs::last_write_time(file_) + std::chrono::seconds(1));

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, HasSubstr("index ByValue")));
}

TEST_F(Soundness, IsForgottenWhenAStatementMeetsDamage) {
  Database(file_).Run("CREATE TABLE Other(x); INSERT INTO Other VALUES(1)");
  Visit();
  Database(file_).Run(
      "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET rootpage = "
      "(SELECT rootpage FROM sqlite_schema WHERE name = 'ByValue') WHERE name = 'Other'");
  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, "DELETE FROM Other WHERE x = 1"),
                FailsWith(SQLITE_CORRUPT, "database disk image is malformed"))
        << "without a check, which would tell where";
  }

  EXPECT_THAT(Delete(), FailsWith(SQLITE_CORRUPT, StartsWith("database disk image is malformed: ")));
}

TEST_F(Soundness, IsNotRememberedOfACheckThatWasEnded) {
  Database(file_).Run(
      "WITH RECURSIVE n(i) AS (SELECT 10000 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) "
      "INSERT INTO Samples SELECT i, 'value ' || i FROM n");
  {
    const OptionScope limit(&shared::StorageOptions::statement_time_limit, std::chrono::milliseconds(1));
    ASSERT_THAT(Delete(), FailsWith(SQLITE_INTERRUPT, testing::_));
  }

  EXPECT_THAT(Delete(), Succeeded());
}

TEST_F(Soundness, IsNotAskedForWhenTheOptionIsOff) {
  const OptionScope off(&shared::StorageOptions::check_soundness, false);
  SpoilIndex(file_);

  EXPECT_THAT(Delete(), Succeeded());
}

TEST_F(Soundness, DoesNotMatterToReading) {
  SpoilIndex(file_);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples NOT INDEXED"), "2001");
}

}  // namespace
}  // namespace corvo::test
