// Statements with a zero byte: SQLite would run what stands before it, such as a deletion without its condition.
#include <sqlite3.h>

#include <ostream>
#include <string_view>

#include "storage/storage_fixture.h"
#include "support/case_name.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using namespace std::string_view_literals;

struct Cut {
  const char* name;
  std::string_view statement;

  friend void PrintTo(const Cut& value, std::ostream* stream) { *stream << value.name; }
};

class ZeroByteStatement : public StorageTest, public testing::WithParamInterface<Cut> {
 protected:
  ZeroByteStatement() { CreateSamples(3); }
};

TEST_P(ZeroByteStatement, IsRefusedBeforeAnythingRuns) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.Execute(new SqlCommand(GetParam().statement), false),
              FailsWith(SQLITE_MISUSE, HasSubstr("zero byte")));

  EXPECT_EQ(Database(file_).Count("Samples"), 3);
}

TEST_P(ZeroByteStatement, IsRefusedAsTheTextOfAnObjectToo) {
  TelemetryStorage storage(file_.c_str(), "");
  const std::string statement(GetParam().statement);

  EXPECT_THAT(storage.Execute(new SqlCommand(statement), false), FailsWith(SQLITE_MISUSE, HasSubstr("zero byte")));

  EXPECT_EQ(Database(file_).Count("Samples"), 3);
}

INSTANTIATE_TEST_SUITE_P(ZeroByteStatement, ZeroByteStatement,
                         testing::Values(Cut{"BeforeTheCondition", "DELETE FROM Samples\0Archive WHERE id = 9"sv},
                                         Cut{"InATextOfTheStatement", "DELETE FROM Samples WHERE v <> 'a\0b'"sv},
                                         Cut{"InAComment", "DELETE FROM Samples -- all\0"sv},
                                         Cut{"AtTheEnd", "DELETE FROM Samples\0"sv},
                                         Cut{"AtTheStart", "\0DELETE FROM Samples"sv}, Cut{"Alone", "\0"sv}),
                         CaseName());

using StatementText = StorageTest;

TEST_F(StatementText, MayBeAnyKindOfString) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");
  const std::string text = "SELECT COUNT(*) FROM Samples";

  EXPECT_THAT(storage.Execute(new SqlCommand(text), false), Succeeded());
  EXPECT_THAT(storage.Execute(new SqlCommand(text.c_str()), false), Succeeded());
  EXPECT_THAT(storage.Execute(new SqlCommand(std::string_view("SELECT 1, nonsense").substr(0, 8)), false), Succeeded());
  EXPECT_THAT(storage.Execute(new SqlCommand(std::string_view()), false),
              FailsWith(SQLITE_MISUSE, HasSubstr("no statement")));
}

TEST_F(StatementText, ReplacedInARefusedCommandRuns) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("DELETE FROM Samples\0WHERE 0"sv);
  ASSERT_TRUE(storage.Execute(command, false).Failed());

  command->Execute("SELECT COUNT(*) FROM Samples", nullptr, 0);

  EXPECT_THAT(command->GetLastError(), Succeeded());
  EXPECT_EQ(Texts(command->GetResults()), (std::vector<Row>{{"3"}}));
}

TEST_F(StatementText, WithAZeroByteIsShownToTheObserverAsRefused) {
  CreateSamples(3);
  TelemetryStorage storage(file_.c_str(), "");
  const StatementLog log;

  ASSERT_TRUE(storage.Execute(new SqlCommand("DELETE FROM Samples\0WHERE 0"sv), false).Failed());

  ASSERT_EQ(log.All().size(), 1U);
  EXPECT_EQ(log.All()[0].code, SQLITE_MISUSE);
  EXPECT_EQ(log.All()[0].rows_changed, 0);
}

}  // namespace
}  // namespace corvo::test
