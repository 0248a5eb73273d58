// A command on its own, and after a storage has run it.
#include <sqlite3.h>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::StartsWith;

class Command : public StorageTest {
 protected:
  Command() { CreateSamples(3); }
};

TEST_F(Command, KeepsACopyOfItsStatement) {
  std::string sql = "SELECT 1";
  const SqlCommand command(sql.c_str());

  sql = "changed";

  EXPECT_STREQ(command.GetSqlStatement(), "SELECT 1");
}

TEST_F(Command, HasNoResultsAndNoErrorBeforeItRuns) {
  const SqlCommand command("SELECT 1");

  EXPECT_EQ(command.GetResults().count, 0);
  EXPECT_FALSE(command.HasNext());
  EXPECT_THAT(command.GetLastError(), Succeeded());
}

TEST_F(Command, StepsOverEveryRowOnce) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT id FROM Samples");
  ASSERT_THAT(storage.Execute(command, false), Succeeded());

  for (int row = 0; row < 3; ++row) {
    EXPECT_TRUE(command->HasNext());
    EXPECT_THAT(command->Next(), Succeeded());
  }
  EXPECT_FALSE(command->HasNext());
  EXPECT_THAT(command->Next(), FailsWith(SQLITE_DONE, StartsWith("no more rows available: ")));
  EXPECT_THAT(command->GetLastError(), FailsWith(SQLITE_DONE, StartsWith("no more rows available: ")));
}

TEST_F(Command, KeepsItsFailure) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT id FROM Missing");

  ASSERT_TRUE(storage.Execute(command, false).Failed());

  EXPECT_THAT(command->GetLastError(), FailsWith(SQLITE_ERROR, "no such table: Missing"));
}

TEST_F(Command, TakesStatementAndParametersToRunLater) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT 'replaced'");
  const char* parameters[] = {"value 2", nullptr};

  command->Execute("SELECT id, ?2 IS NULL FROM Samples WHERE v = ?1", parameters, 2);
  EXPECT_EQ(command->GetResults().count, 0);
  ASSERT_THAT(storage.Execute(command, false), Succeeded());

  EXPECT_STREQ(command->GetSqlStatement(), "SELECT id, ?2 IS NULL FROM Samples WHERE v = ?1");
  EXPECT_EQ(Texts(command->GetResults()), (std::vector<Row>{{"2", "1"}}));
}

TEST_F(Command, OfAStorageRunsItsNewStatementAtOnce) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT 1");
  ASSERT_THAT(storage.Execute(command, false), Succeeded());
  ASSERT_THAT(command->Next(), Succeeded());

  command->Execute("SELECT 2", true, nullptr, 0);

  EXPECT_THAT(command->GetLastError(), Succeeded());
  EXPECT_EQ(Texts(command->GetResults()), (std::vector<Row>{{"2"}}));
  EXPECT_TRUE(command->HasNext()) << "the new rows are read from their first";
}

TEST_F(Command, OfAStorageReportsTheFailureOfItsNewStatement) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT id FROM Samples");
  ASSERT_THAT(storage.Execute(command, false), Succeeded());

  command->Execute("SELECT id FROM Missing", nullptr, 0);

  EXPECT_THAT(command->GetLastError(), FailsWith(SQLITE_ERROR, "no such table: Missing"));
  EXPECT_EQ(command->GetResults().count, 0);
}

TEST_F(Command, RefusesMoreParametersThanTheStatementHas) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("");
  const char* parameters[] = {"1", "2"};
  command->Execute("SELECT ?1", parameters, 2);

  EXPECT_THAT(storage.Execute(command, false), FailsWith(SQLITE_RANGE, "column index out of range"));
}

TEST_F(Command, RefusesAnImpossibleParameterList) {
  SqlCommand command("SELECT 1");
  const auto refused = FailsWith(SQLITE_MISUSE, StartsWith("bad parameter or other API misuse: "));

  command.Execute("SELECT 2", nullptr, 1);
  EXPECT_THAT(command.GetLastError(), refused);
  command.Execute("SELECT 2", false, nullptr, -1);
  EXPECT_THAT(command.GetLastError(), refused);

  EXPECT_STREQ(command.GetSqlStatement(), "SELECT 1");
}

TEST_F(Command, MayRunAgainOnItsStorage) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT COUNT(*) FROM Samples");
  ASSERT_THAT(storage.Execute(command, false), Succeeded());
  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());

  ASSERT_THAT(storage.Execute(command, false), Succeeded());

  EXPECT_EQ(Texts(command->GetResults()), (std::vector<Row>{{"2"}}));
}

}  // namespace
}  // namespace corvo::test
