#include "host/show/text_table.h"

#include <gtest/gtest.h>

namespace corvo::telemetry::host {
namespace {

const std::vector<Align> kTextAndNumber = {Align::kLeft, Align::kRight};

TEST(FormatTable, MakesColumnsAsWideAsTheirWidestCell) {
  EXPECT_EQ(FormatTable({{{"NAME", "ROWS"}}, {{"Cache", "1,000"}}, {{"Health", "7"}}}, kTextAndNumber, false),
            "NAME     ROWS\n"
            "Cache   1,000\n"
            "Health      7\n");
}

TEST(FormatTable, DrawsALineWithoutCellsAcrossTheWholeWidth) {
  EXPECT_EQ(FormatTable({{{"Cache", "1"}}, {{}}, {{"Total", "1"}}}, kTextAndNumber, false),
            "Cache  1\n"
            "--------\n"
            "Total  1\n");
}

TEST(FormatTable, LeavesNoBlanksAtLineEnds) {
  EXPECT_EQ(FormatTable({{{"Cache", ""}}, {{"", "1"}}}, kTextAndNumber, false), "Cache\n       1\n");
}

TEST(FormatTable, MarksTonesOnlyWhenColourIsWanted) {
  const std::vector<TableLine> lines = {{{"Cache", "1"}, Tone::kStrong}, {{"a", "2"}}, {{"b", "3"}, Tone::kFaint}};
  EXPECT_EQ(FormatTable(lines, kTextAndNumber, false), "Cache  1\na      2\nb      3\n");
  EXPECT_EQ(FormatTable(lines, kTextAndNumber, true), "\x1b[1mCache  1\x1b[0m\na      2\n\x1b[2mb      3\x1b[0m\n");
}

}  // namespace
}  // namespace corvo::telemetry::host
