#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

constexpr const char* kTag = "DataCleanup::GetTableSize";

class GetTableSize : public EngineTest {
 protected:
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
};

TEST_F(GetTableSize, SendsOneQuery) {
  CreateDatabase("Log", "Samples", 1);
  const StatementLog statements;
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='Samples'"));
}

TEST_F(GetTableSize, IsThePositionOfTheTablesFirstPageInTheFile) {
  Database database = Open("Log");
  CreateTableMeasuring(database, "Samples", 3);
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 3);
}

TEST_F(GetTableSize, DoesNotCountTheOtherPagesOfTheTable) {
  CreateDatabase("Log", "Samples", 0);
  Database database = Open("Log");
  AddPayload(database, "Samples", 5'000'000);
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
}

class RootPage : public GetTableSize, public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(RootPage, RoundsToTheNearestMegabyte) {
  const auto [page, megabytes] = GetParam();
  Database database = Open("Log");
  CreateTable(database, "Filler");
  // Page 1 is the schema, page 2 the filler's root, and each overflow page holds 4,092 bytes.
  AddPayload(database, "Filler", (page - 3) * 4092);
  CreateTable(database, "Samples");
  ASSERT_EQ(database.Number("SELECT rootpage FROM sqlite_schema WHERE name='Samples'"), page);
  EXPECT_EQ(DataCleanup::GetTableSize(contract), megabytes);
}

INSTANTIATE_TEST_SUITE_P(PagesOf4096, RootPage,
                         testing::Values(std::pair(122, 0), std::pair(123, 1), std::pair(367, 2)));

TEST_F(GetTableSize, MissingTableIsZeroWithoutALogRecord) {
  CreateDatabase("Log", "Other", 1);
  const LogCapture log;
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(GetTableSize, NullContractIsZeroWithoutALogRecord) {
  const LogCapture log;
  EXPECT_EQ(DataCleanup::GetTableSize(nullptr), 0);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(GetTableSize, FailureIsZeroAndLogged) {
  auto* quoted = contracts.Make("Samples", {.database = "Log", .table = "a'b"});
  CreateDatabase("Log", "Samples", 1);
  const LogCapture log;
  const StatementLog statements;
  EXPECT_EQ(DataCleanup::GetTableSize(quoted), 0);
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='a'b'"));
  ASSERT_THAT(log.Lines(), testing::SizeIs(1));
  EXPECT_EQ(log.Lines()[0].severity, plog::error);
  EXPECT_EQ(log.Lines()[0].tag, kTag);
  EXPECT_THAT(log.Lines()[0].text, testing::StartsWith("DataCleanup::GetTableSize - exception : {\"category\":"
                                                       "\"EC_Custom\",\"code\":1,\"type\":\"sqlite3\""));
}

}  // namespace
}  // namespace corvo::test
