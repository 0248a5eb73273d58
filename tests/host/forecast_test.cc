#include "host/facts/forecast.h"

#include <gtest/gtest.h>

#include "host/facts/growth.h"

namespace corvo::telemetry::host {
namespace {

Deleted ForecastOne(const TableCounts& table, std::uint32_t max_size_mb = 0, std::uint32_t size_mb = 0) {
  return Forecast({.tables = {table}, .max_size_mb = max_size_mb, .size_mb = size_mb})[0];
}

void ExpectDeleted(const Deleted& deleted, std::int64_t expired, std::int64_t row_limit, std::int64_t size_limit) {
  EXPECT_EQ(deleted.expired, expired);
  EXPECT_EQ(deleted.row_limit, row_limit);
  EXPECT_EQ(deleted.size_limit, size_limit);
}

TEST(Forecast, TakesWhatHasExpiredBeforeItCountsForTheRowLimit) {
  ExpectDeleted(ForecastOne({.rows = 1000, .expired = 100, .max_rows = 1000}), 100, 0, 0);
  ExpectDeleted(ForecastOne({.rows = 1001, .expired = 100, .max_rows = 1000}), 100, 1, 0);
  ExpectDeleted(ForecastOne({.rows = 5000, .expired = 0, .max_rows = 1000}), 0, 4100, 0);
}

TEST(Forecast, TakesTheShareOfTheSizeLimitFromWhatIsLeft) {
  const TableCounts table{.rows = 2000, .expired = 100, .max_rows = 1000, .max_size_mb = 100};
  ExpectDeleted(ForecastOne(table, 100, 120), 100, 1000, 270);
  ExpectDeleted(ForecastOne(table, 100, 99), 100, 1000, 0);
  ExpectDeleted(ForecastOne(table, 100, 500), 100, 1000, 900);
}

TEST(Forecast, TakesAtLeastOneRowForTheSizeLimitWhereThereIsOne) {
  ExpectDeleted(ForecastOne({.rows = 3, .max_size_mb = 100}, 100, 100), 0, 0, 1);
  ExpectDeleted(ForecastOne({.rows = 0, .max_size_mb = 100}, 100, 100), 0, 0, 0);
}

TEST(Forecast, NeedsBothTheDatabasesLimitAndTheContractsForTheSizeLimit) {
  ExpectDeleted(ForecastOne({.rows = 100, .max_size_mb = 100}, 0, 200), 0, 0, 0);
  ExpectDeleted(ForecastOne({.rows = 100, .max_size_mb = 0}, 100, 200), 0, 0, 0);
  ExpectDeleted(ForecastOne({.rows = 100, .max_size_mb = 300}, 100, 200), 0, 0, 0);
}

TEST(Forecast, TakesNothingFromAMissingTable) {
  ExpectDeleted(ForecastOne({.rows = 0, .max_rows = 1, .max_size_mb = 1, .missing = true}, 1, 9), 0, 0, 0);
}

TEST(RowsKept, IsTheLimitLessATenth) {
  EXPECT_EQ(RowsKept(1000), 900);
  EXPECT_EQ(RowsKept(5), 4);
  EXPECT_EQ(RowsKept(1), 0);
}

TEST(DaysToRowLimit, IsNoneWithoutALimitOrWithoutNewRows) {
  EXPECT_FALSE(DaysToRowLimit({.rows = 10, .rows_per_day = 5}).has_value());
  EXPECT_FALSE(DaysToRowLimit({.rows = 10, .max_rows = 1000}).has_value());
}

TEST(DaysToRowLimit, IsNowAboveTheTrimmedLimit) { EXPECT_EQ(DaysToRowLimit({.rows = 901, .max_rows = 1000}), 0); }

TEST(DaysToRowLimit, CountsEveryRowWhileNothingExpires) {
  EXPECT_DOUBLE_EQ(*DaysToRowLimit({.rows = 400, .rows_per_day = 50, .max_rows = 1000}), 10);
  const Growth young{.rows = 400, .rows_per_day = 50, .days_covered = 8, .retention_days = 30, .max_rows = 1000};
  EXPECT_DOUBLE_EQ(*DaysToRowLimit(young), 10);
}

TEST(DaysToRowLimit, IsNoneWhereAsManyExpireAsComeIn) {
  const Growth steady{.rows = 300, .rows_per_day = 10, .days_covered = 30, .retention_days = 30, .max_rows = 1000};
  EXPECT_FALSE(DaysToRowLimit(steady).has_value());
}

TEST(DaysToRowLimit, CountsTheDifferenceWhereMoreComeInThanExpire) {
  // 100 of today's 3000 go each day of 30, and 200 come: 900 more than now after 9 days.
  const Growth growing{.rows = 3000, .rows_per_day = 200, .days_covered = 30, .retention_days = 30, .max_rows = 4334};
  EXPECT_NEAR(*DaysToRowLimit(growing), 9.0, 0.02);
}

TEST(DaysToRowLimit, CountsRowsThatNeverExpireAsStaying) {
  Growth growth{.rows = 800, .rows_per_day = 10, .days_covered = 30, .retention_days = 30, .max_rows = 1000};
  EXPECT_FALSE(DaysToRowLimit(growth).has_value());
  growth.never_expire = 700;
  EXPECT_NEAR(*DaysToRowLimit(growth), 15.0, 0.001);
}

}  // namespace
}  // namespace corvo::telemetry::host
