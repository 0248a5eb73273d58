#include "host/pass/stall_limit.h"

#include <gtest/gtest.h>

#include "host/facts/record/history.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

class StallLimits : public testing::Test {
 protected:
  [[nodiscard]] StallLimit Find(double seconds) const { return FindStallLimit(seconds, folder_.Path()); }

  void RecordRate(std::int64_t bytes_per_second) const {
    RunRecord run;
    run.databases = {{.name = "HealthLog", .compaction_seconds = 1, .compacted_bytes = bytes_per_second}};
    AddToHistory(folder_.Path(), run);
  }

  test::TempDir folder_;
};

TEST_F(StallLimits, GoByTheCompactionsThatAreRecorded) {
  RecordRate(2'000'000);
  const StallLimit limit = Find(5);
  EXPECT_EQ(limit.Bytes(), 10'000'000);
  EXPECT_EQ(limit.SecondsFor(80'000'000), 40);
  EXPECT_EQ(limit.Reason(80'000'000), "it would take about 40 s, --max-stall is 5 s");
}

TEST_F(StallLimits, GoByATrialWhereNothingIsRecorded) {
  const StallLimit limit = Find(0.5);
  EXPECT_GT(limit.bytes_per_second, 0);
  EXPECT_GT(limit.Bytes(), 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(StallLimits, OfNoTimeLetNothingBeCompacted) {
  RecordRate(2'000'000);
  EXPECT_EQ(Find(0).Bytes(), 1);
  EXPECT_EQ(Find(0).Reason(4'096), "--max-stall is 0 s");
}

TEST(StallLimitReason, HasFiguresThatFitItsSize) {
  const StallLimit limit{.seconds = 0.001, .bytes_per_second = 1'000};
  EXPECT_EQ(limit.Reason(50), "it would take about 0.05 s, --max-stall is 0.001 s");
  EXPECT_EQ(limit.Reason(2'340), "it would take about 2.4 s, --max-stall is 0.001 s");
  EXPECT_EQ(limit.Reason(1'234'567), "it would take about 1235 s, --max-stall is 0.001 s");
}

TEST(StallLimitReason, IsThatOfAnUnknownTimeWhereNoTrialCouldBeMade) {
  const StallLimit limit{.seconds = 5};
  EXPECT_EQ(limit.Reason(50), "how long it would take is not known, --max-stall is 5 s");
  EXPECT_EQ(limit.Bytes(), 1);
}

TEST(StallLimitBytes, FitTheirTypeWhateverTheLimit) {
  EXPECT_GT((StallLimit{.seconds = 86'400, .bytes_per_second = 1e18}.Bytes()), 0);
}

}  // namespace
}  // namespace corvo::telemetry::host
