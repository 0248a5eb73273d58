// What a program leaves that is killed while it commits.
#include <sqlite3.h>

#include <map>
#include <ostream>

#include "storage/file_watch.h"
#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class InterruptedTransaction : public StorageTest {
 protected:
  InterruptedTransaction() {
    CreateSamples(3);
    std::filesystem::copy_file(file_, other_);
  }

  /// Commits, and leaves the folder as it was just before the `deletion`th file was deleted (counted from 0).
  void CommitUntil(int deletion, const std::string& sql) {
    std::map<std::string, std::string> files;
    {
      Database database(file_);
      database.Run("ATTACH '" + other_ + "' AS other");
      int deletions = 0;
      const FileWatch watch([&](const FileCall& call) {
        if (call.operation == "delete" && deletions++ == deletion) {
          files = Folder();
        }
      });
      database.Run(sql);
    }
    ASSERT_FALSE(files.empty()) << "there was no such deletion";
    for (const auto& [path, content] : files) {
      Write(path, content);
    }
  }

  std::map<std::string, std::string> Folder() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir_.Path())) {
      files[entry.path().string()] = Content(entry.path().string());
    }
    return files;
  }

  std::string other_ = dir_ / "Other.db";
};

TEST_F(InterruptedTransaction, OfOneDatabaseIsRolledBack) {
  CommitUntil(0, "DELETE FROM Samples");
  ASSERT_TRUE(std::filesystem::exists(file_ + "-journal"));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
}

/// Where the killed program was. The first deletion commits both databases at once, the others tidy up.
struct Moment {
  const char* name;
  int deletion;

  friend void PrintTo(const Moment& value, std::ostream* stream) { *stream << value.name; }
};

class InterruptedTransactionOfTwo : public InterruptedTransaction,
                                    public testing::WithParamInterface<std::tuple<Moment, const char*>> {};

TEST_P(InterruptedTransactionOfTwo, IsAFailureForEachThatIsNotTidy) {
  const auto& [moment, statement] = GetParam();
  CommitUntil(moment.deletion, "BEGIN; DELETE FROM main.Samples; DELETE FROM other.Samples; COMMIT");
  const std::map<std::string, std::string> before = Folder();
  int untidy = 0;

  for (const std::string& file : {file_, other_}) {
    if (std::filesystem::exists(file + "-journal")) {
      ++untidy;
      TelemetryStorage storage(file.c_str(), "");
      EXPECT_THAT(RunSql(storage, statement).what, HasSubstr("transaction over several databases"));
    }
  }

  EXPECT_EQ(untidy, moment.deletion < 2 ? 2 : 1);
  EXPECT_EQ(Folder(), before);
}

INSTANTIATE_TEST_SUITE_P(InterruptedTransaction, InterruptedTransactionOfTwo,
                         testing::Combine(testing::Values(Moment{"BeforeItCommits", 0}, Moment{"AfterItCommitted", 1},
                                                          Moment{"WithOneJournalLeft", 2}),
                                          testing::Values("SELECT COUNT(*) FROM Samples", "DELETE FROM Samples")),
                         [](const auto& test_case) {
                           return std::string(std::get<0>(test_case.param).name) + "_" +
                                  std::string(std::get<1>(test_case.param)).substr(0, 6);
                         });

class KeptJournal : public InterruptedTransaction, public testing::WithParamInterface<const char*> {};

// A journal that stays after a commit has a header of zeros, or no content.
TEST_P(KeptJournal, OfAFinishedTransactionOverTwoIsNoFailure) {
  {
    Database database(file_);
    database.Run(std::string("PRAGMA journal_mode=") + GetParam());
    database.Run("ATTACH '" + other_ + "' AS other");
    database.Run("BEGIN; DELETE FROM main.Samples WHERE id = 1; DELETE FROM other.Samples; COMMIT");
    database.Run("DELETE FROM Samples WHERE id = 2");
  }
  ASSERT_TRUE(std::filesystem::exists(file_ + "-journal"));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "1");
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

INSTANTIATE_TEST_SUITE_P(InterruptedTransaction, KeptJournal, testing::Values("PERSIST", "TRUNCATE"), CaseName());

}  // namespace
}  // namespace corvo::test
