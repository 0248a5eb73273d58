#include "host/show/progress.h"

#include <gtest/gtest.h>

#include <limits>

namespace corvo::telemetry::host {
namespace {

using std::chrono::hours;
using std::chrono::seconds;

const ProgressState kState = {"HealthLog", "deleting expired rows", 0.349};

TEST(ProgressLine, TellsDatabaseStepTimeAndShare) {
  EXPECT_EQ(ProgressLine(kState, seconds(65), 80), "HealthLog: deleting expired rows  1:05  34 %");
  EXPECT_EQ(ProgressLine({"HealthLog", "compacting"}, hours(26) + seconds(3), 80), "HealthLog: compacting  26:00:03");
}

TEST(ProgressLine, SharesThatAreNoneAreLeftOut) {
  const auto line_of = [](double share) { return ProgressLine({"A", "b", share}, seconds(0), 80); };
  EXPECT_EQ(line_of(0), "A: b  0:00  0 %");
  EXPECT_EQ(line_of(0.999), "A: b  0:00  99 %");
  EXPECT_EQ(line_of(1), "A: b  0:00  100 %");
  EXPECT_EQ(line_of(1e300), "A: b  0:00  100 %");
  EXPECT_EQ(line_of(-1), "A: b  0:00");
  EXPECT_EQ(line_of(std::numeric_limits<double>::quiet_NaN()), "A: b  0:00");
}

TEST(ProgressLine, LeavesTheLastColumnFreeAndKeepsTimeAndShare) {
  EXPECT_EQ(ProgressLine(kState, seconds(65), 45), "HealthLog: deleting expired rows  1:05  34 %");
  EXPECT_EQ(ProgressLine(kState, seconds(65), 44), "HealthLog: deleting expired row  1:05  34 %");
  EXPECT_EQ(ProgressLine(kState, seconds(65), 20), "HealthL  1:05  34 %");
}

TEST(ProgressLine, OfANarrowTerminalIsTheShareOrTheTime) {
  EXPECT_EQ(ProgressLine(kState, seconds(65), 19), "34 %");
  EXPECT_EQ(ProgressLine({"HealthLog", "compacting"}, seconds(65), 19), "1:05");
  EXPECT_EQ(ProgressLine(kState, seconds(65), 3), "34");
  EXPECT_EQ(ProgressLine(kState, seconds(65), 1), "");
  EXPECT_EQ(ProgressLine(kState, seconds(65), 0), "");
}

TEST(ProgressLine, CountsCharactersNotBytes) {
  EXPECT_EQ(ProgressLine({"Gerät", "Übergröße"}, seconds(5), 23), "Gerät: Übergröße  0:05");
  EXPECT_EQ(ProgressLine({"Gerät", "Übergröße"}, seconds(5), 21), "Gerät: Übergrö  0:05");
}

TEST(ProgressLine, ShowsNamesEscaped) {
  EXPECT_EQ(ProgressLine({"a\x1b[2J", "b\nc"}, seconds(5), 80), R"(a\x1b[2J: b\nc  0:05)");
}

}  // namespace
}  // namespace corvo::telemetry::host
