// The files beside a database that SQLite opens, overwrites and deletes on its own.
#include <sqlite3.h>

#include <ostream>
#include <set>

#include "storage/file_watch.h"
#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class SideFiles : public StorageTest {
 protected:
  void CreateSamplesIn(const std::string& journal_mode, int rows) {
    CreateSamples(rows);
    Database(file_).Run("PRAGMA journal_mode=" + journal_mode);
  }
};

class LinkedSideFile : public SideFiles, public testing::WithParamInterface<std::tuple<const char*, const char*>> {};

TEST_P(LinkedSideFile, IsRefusedAndTheOtherFileKeepsItsContent) {
  const auto& [suffix, journal_mode] = GetParam();
  CreateSamplesIn(journal_mode, 3);
  const std::string before = Content(file_);
  const std::string other = dir_ / "Precious.bin";
  const std::string content(40'000, 'x');
  Write(other, content);
  std::filesystem::create_hard_link(other, file_ + suffix);

  for (const char* statement : {"SELECT COUNT(*) FROM Samples", "DELETE FROM Samples"}) {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_THAT(RunSql(storage, statement), FailsWith(SQLITE_CANTOPEN, HasSubstr(std::string("Test.db") + suffix)));
  }

  EXPECT_EQ(Content(other), content);
  EXPECT_TRUE(std::filesystem::exists(file_ + suffix));
  EXPECT_EQ(Content(file_), before);
}

INSTANTIATE_TEST_SUITE_P(SideFiles, LinkedSideFile,
                         testing::Combine(testing::Values("-journal", "-wal", "-shm"),
                                          testing::Values("DELETE", "WAL")),
                         [](const auto& test_case) {
                           return std::string(std::get<0>(test_case.param)).substr(1) + "_" +
                                  std::get<1>(test_case.param);
                         });

using LinkedDatabase = SideFiles;

TEST_F(LinkedDatabase, IsNotWrittenUnderOneNameWhileItsLogLiesBesideAnother) {
  CreateSamplesIn("WAL", 3);
  const std::string other_name = dir_ / "Other.db";
  std::filesystem::create_hard_link(file_, other_name);
  Database collector(file_);
  collector.Run("INSERT INTO Samples VALUES(4, 'in the log')");

  for (const char* statement : {"DELETE FROM Samples", "VACUUM;"}) {
    TelemetryStorage storage(other_name.c_str(), "");
    EXPECT_THAT(RunSql(storage, statement), FailsWith(SQLITE_CANTOPEN, HasSubstr("a file with several names")));
  }

  EXPECT_FALSE(std::filesystem::exists(other_name + "-wal"));
  EXPECT_EQ(collector.Count("Samples"), 4);
}

TEST_F(LinkedDatabase, IsReadUnderEachOfItsNames) {
  CreateSamples(3);
  const std::string other_name = dir_ / "Other.db";
  std::filesystem::create_hard_link(file_, other_name);
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  TelemetryStorage storage(other_name.c_str(), "");

  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
}

TEST_F(SideFiles, OfAnEmptyDatabaseAreLeftThereByWhoeverOnlyReads) {
  CreateSamplesIn("WAL", 3);
  {
    Database collector(file_);
    collector.Run("INSERT INTO Samples VALUES(4, 'in the log')");
    std::filesystem::copy_file(file_ + "-wal", file_ + "-kept");
  }
  Write(file_, "");
  std::filesystem::rename(file_ + "-kept", file_ + "-wal");
  const std::string log = Content(file_ + "-wal");
  const OptionScope reading(&shared::StorageOptions::read_only, true);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"),
              FailsWith(SQLITE_CANTOPEN, HasSubstr("a log beside an empty database")));

  EXPECT_EQ(Content(file_ + "-wal"), log);
}

/// Everything that SQLite asks the platform for while the object lives, without its temporary files.
class NamedFiles {
 public:
  [[nodiscard]] const std::set<std::string>& Paths() const { return paths_; }

 private:
  std::set<std::string> paths_;
  FileWatch watch_{[this](const FileCall& call) {
    if (!call.path.empty()) {
      paths_.insert(call.path);
    }
  }};
};

class OwnFiles : public SideFiles, public testing::WithParamInterface<const char*> {};

TEST_P(OwnFiles, AreAllThatIsOpenedDeletedOrAskedFor) {
  CreateSamplesIn(GetParam(), 3000);
  const NamedFiles named;
  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"), Succeeded());
    ASSERT_THAT(RunSql(storage, "SELECT * FROM Samples ORDER BY v"), Succeeded());
    ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id > 100"), Succeeded());
    ASSERT_THAT(RunSql(storage, "VACUUM;"), Succeeded());
  }

  const std::string file = std::filesystem::canonical(file_).string();
  EXPECT_THAT(named.Paths(), testing::Contains(file)) << "nothing was watched";
  for (const std::string& path : named.Paths()) {
    EXPECT_THAT(path, testing::AnyOf(file, file + "-journal", file + "-wal", file + "-shm"));
  }
}

INSTANTIATE_TEST_SUITE_P(SideFiles, OwnFiles, testing::Values("DELETE", "TRUNCATE", "PERSIST", "WAL"), CaseName());

/// A statement that asks for another file, with {} in its place.
struct Reach {
  const char* name;
  const char* statement;
  const char* file;

  friend void PrintTo(const Reach& value, std::ostream* stream) { *stream << value.name; }
};

class OtherFiles : public SideFiles, public testing::WithParamInterface<Reach> {};

TEST_P(OtherFiles, AreNotReachedByStatements) {
  CreateSamples(3);
  Database(dir_ / "State.db").Run("CREATE TABLE State(x)");
  const std::string path = dir_ / GetParam().file;
  std::string statement = GetParam().statement;
  statement.replace(statement.find("{}"), 2, path);
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"), Succeeded());
  const bool existed = std::filesystem::exists(path);
  const NamedFiles named;

  const Error error = RunSql(storage, statement);

  EXPECT_TRUE(error.Failed());
  EXPECT_THAT(named.Paths(), testing::Not(testing::Contains(HasSubstr(GetParam().file))));
  EXPECT_EQ(std::filesystem::exists(path), existed);
}

INSTANTIATE_TEST_SUITE_P(SideFiles, OtherFiles,
                         testing::Values(Reach{"AttachedDatabase", "ATTACH '{}' AS other", "State.db"},
                                         Reach{"AttachedNewDatabase", "ATTACH '{}' AS other", "New.db"},
                                         Reach{"AttachedUri", "ATTACH 'file:{}?mode=ro' AS other", "State.db"},
                                         Reach{"CompactedCopy", "VACUUM INTO '{}'", "Copy.db"}),
                         CaseName());

}  // namespace
}  // namespace corvo::test
