#include "host/show/bar.h"

#include <gtest/gtest.h>

#include "host/show/fitting_table.h"

namespace corvo::telemetry::host {
namespace {

TEST(Bar, FillsEighthsOfBlocks) {
  EXPECT_EQ(Bar(0.5, 4, true), "██░░");
  EXPECT_EQ(Bar(0.25 + 3.0 / 32, 4, true), "█▍░░");
  EXPECT_EQ(Bar(1, 4, true), "████");
}

TEST(Bar, FillsWholeCharactersWithoutBlocks) { EXPECT_EQ(Bar(0.5, 4, false), "##.."); }

TEST(Bar, IsEmptyForNothingAloneAndFullForNothingLess) {
  EXPECT_EQ(Bar(0, 4, true), "░░░░");
  EXPECT_EQ(Bar(0.0001, 4, true), "▏░░░");
  EXPECT_EQ(Bar(0.9999, 4, true), "███▉");
  EXPECT_EQ(Bar(0.0001, 4, false), "#...");
  EXPECT_EQ(Bar(0.9999, 4, false), "###.");
}

TEST(Bar, EndsInAnArrowAboveTheLimit) {
  EXPECT_EQ(Bar(1.01, 4, true), "███>");
  EXPECT_EQ(Bar(99, 4, false), "###>");
}

FittingColumn Texts(const std::string& head, int rank, const std::string& text) {
  return {.head = head, .rank = rank, .texts = {text}};
}

TEST(FormatFitting, GivesTheBarsWhatTheTextsLeave) {
  const FittingColumn bars{.head = "BAR", .align = Align::kLeft, .bars = true, .shares = {0.5}};
  EXPECT_EQ(FormatFitting({Texts("A", 0, "12"), bars}, {Tone::kPlain}, {.width = 14}),
            " A  BAR\n"
            "12  #####.....\n");
}

TEST(FormatFitting, LeavesOutWhatIsNeededLeastWhenItIsTooNarrow) {
  const std::vector<FittingColumn> columns = {Texts("NAME", 0, "x"), Texts("LESS", 2, "1"), Texts("MORE", 1, "2")};
  EXPECT_EQ(FormatFitting(columns, {Tone::kPlain}, {.width = 16}), "NAME  LESS  MORE\n   x     1     2\n");
  EXPECT_EQ(FormatFitting(columns, {Tone::kPlain}, {.width = 15}), "NAME  MORE\n   x     2\n");
  EXPECT_EQ(FormatFitting(columns, {Tone::kPlain}, {.width = 1}), "NAME\n   x\n");
}

TEST(FormatFitting, LeavesOutWhatSaysNothing) {
  EXPECT_EQ(FormatFitting({Texts("NAME", 0, "x"), Texts("WAL", 0, "")}, {Tone::kPlain}, {.width = 80}), "NAME\n   x\n");
}

}  // namespace
}  // namespace corvo::telemetry::host
