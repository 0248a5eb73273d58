#include <gtest/gtest.h>

#include <ostream>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/case_name.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

class DeleteExtraRows : public EngineTest {
 protected:
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log"});
  DataCleanup collector;
};

struct LimitCase {
  const char* name;
  std::uint32_t limit;
  std::int64_t rows, left;

  friend void PrintTo(const LimitCase& value, std::ostream* stream) { *stream << value.name; }
};

class RowLimit : public DeleteExtraRows, public testing::WithParamInterface<LimitCase> {};

TEST_P(RowLimit, LeavesNinetyPercentOfTheLimit) {
  CreateDatabase("Log", "Samples", GetParam().rows);
  EXPECT_THAT(collector.DeleteExtraRows(contract, GetParam().limit), Succeeded());
  EXPECT_EQ(Open("Log").Count("Samples"), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(Tables, RowLimit,
                         testing::Values(LimitCase{"AtTheReducedLimit", 1000, 900, 900},
                                         LimitCase{"OneAboveTheReducedLimit", 1000, 901, 900},
                                         LimitCase{"UnderTheLimitButAboveTheReducedOne", 1000, 950, 900},
                                         LimitCase{"FarAboveTheLimit", 1000, 5000, 900},
                                         LimitCase{"FiveOfFive", 5, 5, 4},
                                         LimitCase{"LimitOneEmptiesTheTable", 1, 12, 0},
                                         LimitCase{"LimitOneOnAnEmptyTable", 1, 0, 0},
                                         LimitCase{"LimitZeroIsNoLimit", 0, 5000, 5000},
                                         LimitCase{"WidestLimitKeepsAll", 4'294'967'295, 5000, 5000}),
                         CaseName());

TEST_F(DeleteExtraRows, DeletesTheOldestRows) {
  CreateDatabase("Log", "Samples", 12);
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), Succeeded());
  EXPECT_EQ(Open("Log").Number("SELECT min(value) FROM Samples"), 4);
}

TEST_F(DeleteExtraRows, CountsFirstAndThenDeletesTheSurplus) {
  CreateDatabase("Log", "Samples", 12);
  const StatementLog statements;
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT COUNT(*) AS rows FROM Samples",
                                                     "DELETE FROM Samples WHERE rowid IN (SELECT rowid FROM Samples "
                                                     "ORDER BY rowid ASC LIMIT 3);"));
}

TEST_F(DeleteExtraRows, WithinTheLimitOnlyCounts) {
  CreateDatabase("Log", "Samples", 9);
  const StatementLog statements;
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT COUNT(*) AS rows FROM Samples"));
}

TEST_F(DeleteExtraRows, LimitZeroNeverCounts) {
  const StatementLog statements;
  EXPECT_THAT(collector.DeleteExtraRows(contract, 0), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(DeleteExtraRows, NullContractNeverCounts) {
  const StatementLog statements;
  EXPECT_THAT(collector.DeleteExtraRows(nullptr, 10), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(DeleteExtraRows, MissingTableIsLeftAloneEvenUnderTheSmallestLimit) {
  CreateDatabase("Log", "Other", 3);
  const StatementLog statements;
  EXPECT_THAT(collector.DeleteExtraRows(contract, 1), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT COUNT(*) AS rows FROM Samples"));
}

TEST_F(DeleteExtraRows, FailedCountIsTheResultAndNothingIsDeleted) {
  const StatementLog statements;
  const LogCapture log;
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), FailedWith("Log.db"));
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT COUNT(*) AS rows FROM Samples"));
  // The count logs its failure; this operation adds nothing.
  ASSERT_THAT(log.Lines(), testing::SizeIs(1));
  EXPECT_EQ(log.Lines()[0].tag, "DataCleanup::GetRowCount");
}

TEST_F(DeleteExtraRows, FailedDeleteIsTheResult) {
  Database database = Open("Log");
  database.Run("CREATE TABLE Samples (time TEXT, value PRIMARY KEY) WITHOUT ROWID");
  AddRows(database, "Samples", 12);
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), FailedWith("no such column: rowid"));
  EXPECT_EQ(database.Count("Samples"), 12);
}

}  // namespace
}  // namespace corvo::test
