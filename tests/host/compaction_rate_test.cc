#include "host/facts/record/compaction_rate.h"

#include <gtest/gtest.h>

namespace corvo::telemetry::host {
namespace {

/// A run of one compaction.
RunRecord Compacted(std::int64_t bytes, double seconds) {
  RunRecord run;
  run.databases = {{.name = "HealthLog", .compaction_seconds = seconds, .compacted_bytes = bytes}};
  return run;
}

TEST(CompactionRate, IsUnknownWithoutARecord) {
  EXPECT_EQ(CompactionRate({}), std::nullopt);
  EXPECT_EQ(CompactionRate({RunRecord()}), std::nullopt);
}

TEST(CompactionRate, IsTheMedianOfTheCompactions) {
  EXPECT_EQ(CompactionRate({Compacted(1'000, 1), Compacted(3'000, 1), Compacted(900'000, 1)}), 3'000);
}

TEST(CompactionRate, IsOfEachDatabaseOfARun) {
  RunRecord run = Compacted(1'000, 1);
  for (const std::int64_t bytes : {4'000, 6'000}) {
    run.databases.push_back({.name = "Cache", .compaction_seconds = 2, .compacted_bytes = bytes});
  }
  EXPECT_EQ(CompactionRate({run}), 2'000);
}

TEST(CompactionRate, DoesNotTrustTheShortestTimes) {
  EXPECT_EQ(CompactionRate({Compacted(1'000'000, 0.049)}), std::nullopt);
  EXPECT_EQ(CompactionRate({Compacted(1'000'000, 0.05)}), 20'000'000);
}

TEST(CompactionRate, DoesNotCountCompactionsThatWereLeftOut) {
  EXPECT_EQ(CompactionRate({Compacted(0, 1), Compacted(5'000, 1)}), 5'000);
}

TEST(CompactionRate, IsThatOfTheLastTrialWhereNoneIsRecorded) {
  RunRecord first;
  first.compaction_rate = 1'000;
  RunRecord second;
  second.compaction_rate = 2'000;
  EXPECT_EQ(CompactionRate({first, second, RunRecord()}), 2'000);
  EXPECT_EQ(CompactionRate({Compacted(5'000, 1), first}), 5'000);
}

TEST(CompactionRate, GoesByTheNewestRuns) {
  std::vector<RunRecord> runs(100, Compacted(1'000, 1));
  runs.insert(runs.end(), 20, Compacted(7'000, 1));
  EXPECT_EQ(CompactionRate(runs), 7'000);
}

// When all compactions are left out, no better rate comes.
TEST(CompactionRate, IsForgottenAfterTwentyRuns) {
  RunRecord tried;
  tried.compaction_rate = 1'000;
  std::vector<RunRecord> runs = {Compacted(5'000, 1), tried};
  runs.insert(runs.end(), 19, RunRecord());
  EXPECT_EQ(CompactionRate(runs), 1'000);
  runs.emplace_back();
  EXPECT_EQ(CompactionRate(runs), std::nullopt);
}

}  // namespace
}  // namespace corvo::telemetry::host
