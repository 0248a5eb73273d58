// Journals that name a file of somebody else: SQLite reads and deletes it when it plays the journal back.
#include <sqlite3.h>

#include <ostream>

#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

constexpr const char* kSeveralDatabases = "transaction over several databases";

/// What a planted journal names, in the folder of the database.
struct Victim {
  const char* name;
  const char* file;
  void (*make)(const std::string& path);

  friend void PrintTo(const Victim& value, std::ostream* stream) { *stream << value.name; }
};

void MakeNothing(const std::string& /*path*/) {}
void MakeEmptyFile(const std::string& path) { Write(path, ""); }
void MakeText(const std::string& path) { Write(path, "not of any database"); }
void MakeDatabase(const std::string& path) { Database(path).Run("CREATE TABLE State(x); INSERT INTO State VALUES(1)"); }

const Victim kVictims[] = {{"AnyFile", "Notes.txt", MakeText},      {"AnEmptyFile", "Notes.txt", MakeEmptyFile},
                           {"NoFile", "Gone-mj1", MakeNothing},     {"AnotherDatabase", "State.db", MakeDatabase},
                           {"TheDatabase", "Test.db", MakeNothing}, {"ItsJournal", "Test.db-journal", MakeNothing}};

class PlantedJournal : public StorageTest {
 protected:
  /// Three rows, and a journal beside them that names `victim`.
  void Plant(const std::string& victim, const char* journal_mode) {
    CreateSamples(3);
    std::string journal;
    {
      Database database(file_);
      database.Run(std::string("PRAGMA journal_mode=") + journal_mode);
      journal = JournalOfSeveralDatabases(database, victim);
    }
    Write(journal_file_, journal);
    database_before_ = Content(file_);
    journal_before_ = Content(journal_file_);
  }

  void ExpectUntouched() const {
    EXPECT_EQ(Content(file_), database_before_);
    EXPECT_EQ(Content(journal_file_), journal_before_);
  }

  std::string journal_file_ = file_ + "-journal";
  std::string database_before_;
  std::string journal_before_;
};

class PlantedJournalFor : public PlantedJournal,
                          public testing::WithParamInterface<std::tuple<Victim, const char*, const char*>> {};

TEST_P(PlantedJournalFor, IsAFailureThatTouchesNoFile) {
  const auto& [victim, journal_mode, statement] = GetParam();
  const std::string path = dir_ / victim.file;
  victim.make(path);
  Plant(path, journal_mode);
  const bool existed = std::filesystem::exists(path);
  const std::string before = Content(path);
  {
    TelemetryStorage storage(file_.c_str(), "");

    const Error error = RunSql(storage, statement);

    EXPECT_TRUE(error.Failed());
    EXPECT_THAT(error.what, HasSubstr(kSeveralDatabases));
  }
  EXPECT_EQ(std::filesystem::exists(path), existed);
  EXPECT_EQ(Content(path), before);
  ExpectUntouched();
}

std::string CaseName(const testing::TestParamInfo<PlantedJournalFor::ParamType>& test_case) {
  const auto& [victim, journal_mode, statement] = test_case.param;
  return std::string(victim.name) + "_" + journal_mode + "_" + std::string(statement).substr(0, 6);
}

INSTANTIATE_TEST_SUITE_P(OpenedForACount, PlantedJournalFor,
                         testing::Combine(testing::ValuesIn(kVictims), testing::Values("DELETE", "WAL"),
                                          testing::Values("SELECT COUNT(*) FROM Samples")),
                         CaseName);

INSTANTIATE_TEST_SUITE_P(OpenedToWrite, PlantedJournalFor,
                         testing::Combine(testing::Values(kVictims[3]), testing::Values("DELETE", "WAL"),
                                          testing::Values("DELETE FROM Samples", "VACUUM;")),
                         CaseName);

TEST_F(PlantedJournal, ThatNamesAHugeFileTakesNoMemoryForIt) {
  const std::string huge = dir_ / "Huge.bin";
  const std::string other_journal = dir_ / "Other.db-journal";
  Plant(huge, "DELETE");
  // SQLite looks for a journal that still needs the huge file, and so need not look further.
  Write(other_journal, journal_before_);
  Write(huge, other_journal);
  std::filesystem::resize_file(huge, std::uintmax_t{1} << 30);
  sqlite3_memory_highwater(1);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples").what, HasSubstr(kSeveralDatabases));

  EXPECT_LT(sqlite3_memory_highwater(0), 16 << 20);
  EXPECT_TRUE(std::filesystem::exists(huge));
}

TEST_F(PlantedJournal, ThatIsTakenAwayLeavesAllRowsAndTheStorageUsable) {
  Plant(dir_ / "Notes.txt", "DELETE");
  TelemetryStorage storage(file_.c_str(), "");
  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples").what, HasSubstr(kSeveralDatabases));

  std::filesystem::remove(journal_file_);

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
}

}  // namespace
}  // namespace corvo::test
