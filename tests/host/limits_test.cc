#include "host/facts/explain/limits.h"

#include <gtest/gtest.h>

namespace corvo::telemetry::host {
namespace {

/// 2024-05-02T00:00:00 UTC.
constexpr std::int64_t kNow = 1'714'608'000;
constexpr std::int64_t kDay = 86'400;

TableState Table(std::uint32_t retention_days, std::uint32_t max_rows, double rows_per_day) {
  TableState table;
  table.contract.retention_days = retention_days;
  table.contract.max_rows = max_rows;
  table.rows_per_day = rows_per_day;
  return table;
}

TEST(ExpiryMoment, IsTheRowsOwnAndTheRetention) {
  EXPECT_EQ(ExpiryMoment(kNow, 30), kNow + 30 * kDay);
  EXPECT_EQ(ExpiryMoment(kNow, 0), std::nullopt);
}

TEST(ExpiryMoment, OfARetentionThatWrapsComesEarly) { EXPECT_EQ(ExpiryMoment(kNow, 49'711), kNow + 63'104); }

TEST(ExpiryMoment, OfATimeBefore1970ComesWhenTheCutoffIsThere) {
  EXPECT_EQ(ExpiryMoment(-5 * kDay, 10), 10 * kDay - 1);
}

TEST(ExpiryMoment, OfTheLastSecondOfTheYear9999NeverComes) {
  constexpr std::int64_t kLast = 253'402'300'799;
  EXPECT_EQ(ExpiryMoment(kLast, 1), std::nullopt);
  EXPECT_EQ(ExpiryMoment(kLast - 1, 1), kLast - 1 + kDay);
}

TEST(ReachOf, ARowLimitThatLeavesFewerDaysThanAskedComesFirst) {
  const Reach reach = ReachOf(Table(30, 10'000, 1000), true);
  EXPECT_EQ(reach.first, Rule::kRowLimit);
  EXPECT_EQ(reach.age_days, 30);
  EXPECT_EQ(reach.row_limit_days, 9);
}

TEST(ReachOf, AgeComesFirstWhereTheRowLimitIsFarAwayOrNoRowsComeIn) {
  EXPECT_EQ(ReachOf(Table(30, 10'000, 100), true).first, Rule::kAge);
  EXPECT_EQ(ReachOf(Table(30, 10'000, 0), true).first, Rule::kAge);
  EXPECT_EQ(ReachOf(Table(30, 10'000, 0), true).row_limit_days, std::nullopt);
}

TEST(ReachOf, WithoutARetentionTheRowLimitComesFirst) {
  EXPECT_EQ(ReachOf(Table(0, 10'000, 0), true).first, Rule::kRowLimit);
  EXPECT_EQ(ReachOf(Table(0, 10'000, 1000), false).first, Rule::kRowLimit);
}

TEST(ReachOf, WhatLimitsNothingNeverComes) {
  EXPECT_EQ(ReachOf(Table(0, 0, 1000), true).first, Rule::kSizeLimit);
  EXPECT_EQ(ReachOf(Table(0, 0, 1000), false).first, Rule::kNone);
  EXPECT_EQ(ReachOf(Table(0, 2'386'092'942, 1000), false).first, Rule::kNone);
}

TEST(FateOf, TheOldestGoForTheRowLimitAndTheNextOldestForTheSizeLimit) {
  const Deleted next{.expired = 7, .row_limit = 3, .size_limit = 2};
  EXPECT_EQ(FateOf({.older = 0}, next), Rule::kRowLimit);
  EXPECT_EQ(FateOf({.older = 2}, next), Rule::kRowLimit);
  EXPECT_EQ(FateOf({.older = 3}, next), Rule::kSizeLimit);
  EXPECT_EQ(FateOf({.older = 4}, next), Rule::kSizeLimit);
  EXPECT_EQ(FateOf({.older = 5}, next), Rule::kNone);
}

TEST(FateOf, AnExpiredRowGoesForItsAgeWhereverItStands) {
  EXPECT_EQ(FateOf({.expired = true, .older = 100}, {}), Rule::kAge);
}

TEST(RowsUntilLimit, CountsFromTheNewestRowOn) {
  EXPECT_EQ(RowsUntilLimit({.newer = 0}, 1000), 900);
  EXPECT_EQ(RowsUntilLimit({.newer = 899}, 1000), 1);
  EXPECT_EQ(RowsUntilLimit({.newer = 900}, 1000), 0);
  EXPECT_EQ(RowsUntilLimit({.newer = 5000}, 1000), 0);
}

}  // namespace
}  // namespace corvo::telemetry::host
