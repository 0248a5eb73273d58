#include "host/facts/record/promises.h"

#include <gmock/gmock.h>

#include "host/show/verify/breach_text.h"

namespace corvo::telemetry::host {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// A table of ten rows that a run left as they are.
class PromisesOfATable : public testing::Test {
 protected:
  void ExpectKept() const {
    const TableVerdict check = Check();
    EXPECT_THAT(check.breaches, IsEmpty()) << BreachText(check.breaches.at(0));
  }

  void ExpectBreach(Promise promise, const std::string& text) const {
    const TableVerdict check = Check();
    ASSERT_THAT(check.breaches, SizeIs(1));
    EXPECT_EQ(check.breaches[0].promise, promise);
    EXPECT_EQ(BreachText(check.breaches[0]), text);
    EXPECT_EQ(check.outcomes.Of(promise), Outcome::kBroken);
  }

  [[nodiscard]] TableVerdict Check() const { return JudgeTable(contract_, facts_, recorded_ ? &run_ : nullptr, 1'000); }
  [[nodiscard]] Outcome OutcomeOf(Promise promise) const { return Check().outcomes.Of(promise); }
  TableRecord& Record() { return run_.database.tables[0]; }

  ContractView contract_{.type = "",
                         .name = "Boot",
                         .table = "Boot",
                         .database = "HealthLog",
                         .max_rows = 100,
                         .retention_days = 30,
                         .max_size_mb = 100,
                         .descriptor = nullptr};
  TableFacts facts_{.rows = 10, .of_the_run = 10};
  LastRun run_{.start = 5'000,
               .database = {.name = "HealthLog",
                            .tables = {{.table = "Boot", .rows_before = 10, .rows_after = 10, .last_rowid = 10}}}};
  bool recorded_ = true;
};

TEST_F(PromisesOfATable, AreKeptByAnHonestRun) {
  ExpectKept();
  for (const Promise promise : {Promise::kNoneTooOld, Promise::kWithinLimit, Promise::kNothingLost}) {
    EXPECT_EQ(OutcomeOf(promise), Outcome::kKept);
  }
}

TEST_F(PromisesOfATable, NameTheRowThatIsTooOld) {
  facts_.too_old = 1;
  facts_.first_too_old = RowSample{17, "2001-01-01\x1b[2J"};
  ExpectBreach(Promise::kNoneTooOld, "Boot: row 17 is older than 30 days (2001-01-01\\x1b[2J)");
  facts_.too_old = 1'234;
  ExpectBreach(Promise::kNoneTooOld, "Boot: 1,234 rows older than 30 days (row 17: 2001-01-01\\x1b[2J)");
}

TEST_F(PromisesOfATable, AllowNineTenthsOfTheRowLimit) {
  facts_.rows = 90;
  ExpectKept();
  facts_.rows = 91;
  ExpectBreach(Promise::kWithinLimit, "Boot: 1 row too many; a run leaves 90 at most");
}

TEST_F(PromisesOfATable, CountNoRowThatCameInSince) {
  facts_.rows = 200;
  facts_.came_since = 110;
  ExpectKept();
  EXPECT_EQ(Check().came_since, 110);
  facts_.came_since = 109;
  ExpectBreach(Promise::kWithinLimit, "Boot: 1 row too many; a run leaves 90 at most");
}

TEST_F(PromisesOfATable, CountNoRowThatTheRunSawComeIn) {
  facts_ = {.rows = 95, .of_the_run = 95, .came_during = 7};
  Record().rows_after = 95;
  Record().rows_before = 90;
  ExpectKept();
  Record().rows_before = 91;
  ExpectBreach(Promise::kWithinLimit, "Boot: 1 row too many; a run leaves 90 at most");
}

TEST_F(PromisesOfATable, KeepEveryRowThatTheRunLeft) {
  facts_.of_the_run = 9;
  ExpectBreach(Promise::kNothingLost, "Boot: 1 of the 10 rows that the run left has gone since");
  facts_.rows = 500;
  facts_.came_since = 491;
  facts_.of_the_run = 3;
  ExpectBreach(Promise::kNothingLost, "Boot: 7 of the 10 rows that the run left have gone since");
}

TEST_F(PromisesOfATable, NameARuleForEachRowThatWent) {
  Record().rows_before = 20;
  Record().deleted = {.expired = 5, .row_limit = 3, .size_limit = 2};
  ExpectKept();
  Record().rows_before = 22;
  ExpectBreach(Promise::kNothingLost, "Boot: 2 rows that no rule named went during the run");
}

TEST_F(PromisesOfATable, AreBrokenByATableThatIsGone) {
  facts_ = {.missing = true};
  ExpectBreach(Promise::kNothingLost, "Boot: the table is gone, with the 10 rows that the run left");
  Record().rows_after = std::nullopt;
  ExpectKept();
  EXPECT_EQ(OutcomeOf(Promise::kNothingLost), Outcome::kNone) << "there was none then";
}

TEST_F(PromisesOfATable, CannotAllBeToldWithoutARecord) {
  recorded_ = false;
  EXPECT_EQ(OutcomeOf(Promise::kNoneTooOld), Outcome::kKept);
  EXPECT_EQ(OutcomeOf(Promise::kWithinLimit), Outcome::kKept);
  EXPECT_EQ(OutcomeOf(Promise::kNothingLost), Outcome::kUnknown);
}

TEST_F(PromisesOfATable, CannotBeToldWhereARunCountedNothing) {
  run_.database.problem = "another program holds it locked";
  Record() = {.table = "Boot"};
  EXPECT_EQ(OutcomeOf(Promise::kNothingLost), Outcome::kUnknown);
}

TEST_F(PromisesOfATable, AreNoneWithoutLimits) {
  contract_.max_rows = 0;
  contract_.retention_days = 0;
  facts_.rows = 1'000'000;
  EXPECT_EQ(OutcomeOf(Promise::kNoneTooOld), Outcome::kNone);
  EXPECT_EQ(OutcomeOf(Promise::kWithinLimit), Outcome::kNone);
  ExpectKept();
}

TEST_F(PromisesOfATable, SayNothingOfAgesWithoutTimes) {
  facts_.has_time = false;
  EXPECT_EQ(OutcomeOf(Promise::kNoneTooOld), Outcome::kUnknown);
}

}  // namespace
}  // namespace corvo::telemetry::host
