// A host that lets a part of its databases be opened.
#include <sqlite3.h>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using Names = std::optional<std::set<std::string>>;

class ShownDatabases : public StorageTest {
 protected:
  ShownDatabases() { CreateSamples(3); }
};

TEST_F(ShownDatabases, AreAllByDefault) { EXPECT_EQ(shared::StorageOptions().databases, std::nullopt); }

TEST_F(ShownDatabases, CanBeOpened) {
  const OptionScope shown(&shared::StorageOptions::databases, Names({"Other.db", "Test.db"}));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.GetLastError(), Succeeded());
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

TEST_F(ShownDatabases, LeaveEveryOtherOneAlone) {
  for (const Names& names : {Names({"Other.db"}), Names({"test.db", "Test"}), Names(std::set<std::string>())}) {
    const OptionScope shown(&shared::StorageOptions::databases, names);
    TelemetryStorage storage(file_.c_str(), "");

    EXPECT_TRUE(shared::IsCannotOpen(storage.GetLastError()));
    EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), FailsWith(SQLITE_CANTOPEN, HasSubstr("may be opened")));
    EXPECT_EQ(Database(file_).Number("SELECT COUNT(*) FROM Samples"), 3);
  }
}

TEST_F(ShownDatabases, GiveAPathWithoutAFileForOneThatIsNotShown) {
  const OptionScope shown(&shared::StorageOptions::databases, Names({"Other.db"}));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_EQ(storage.GetDataBasePath(), (std::filesystem::path(file_) / "Test.db").string());
  EXPECT_FALSE(std::filesystem::exists(storage.GetDataBasePath()));
  EXPECT_STREQ(storage.GetDataBaseName(), "Test.db");
}

}  // namespace
}  // namespace corvo::test
