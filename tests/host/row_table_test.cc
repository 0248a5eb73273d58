#include "host/show/rows/row_table.h"

#include <gmock/gmock.h>

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;
using Type = Cell::Type;

Cell Text(const std::string& text) { return {Type::kText, text}; }

TEST(RowTable, PutsNumbersToTheRightAndTextsToTheLeft) {
  RowTable table({"rowid", "name", "share"}, 80, true);
  table.Add({{Type::kInteger, "1"}, Text("a"), {Type::kReal, "0.5"}});
  table.Add({{Type::kInteger, "12"}, Text("long"), {}});
  EXPECT_EQ(table.Text(false), "rowid  name  share\n    1  a       0.5\n   12  long   NULL\n");
}

TEST(RowTable, ShowsAllColumnsCutBeforeItLeavesAnyOut) {
  RowTable table({"a", "b"}, 62, true);
  table.Add({Text(std::string(70, 'x')), Text("y")});
  EXPECT_EQ(table.Text(false), "a" + std::string(60, ' ') + "b\n" + std::string(58, 'x') + "…  y\n");
}

TEST(RowTable, LeavesOutTheLastColumnsAndNamesThem) {
  RowTable table({"first", "second", "third"}, 30, true);
  table.Add({Text(std::string(26, 'x')), Text(std::string(20, 'y')), Text("z")});
  EXPECT_THAT(table.Text(false), HasSubstr("\n2 columns left out: second, t…\n"));
}

TEST(RowTable, ShowsPartOfTheOnlyColumnThatThereIsPlaceFor) {
  RowTable table({"only"}, 20, true);
  table.Add({Text(std::string(100, 'x'))});
  EXPECT_EQ(table.Text(false), "only\n" + std::string(19, 'x') + "…\n");
}

TEST(RowTable, CountsColumnsOfTheTerminalNotBytes) {
  RowTable table({"a", "b"}, 80, true);
  table.Add({Text("日本"), Text("x")});
  table.Add({Text("é"), Text("x")});
  EXPECT_EQ(table.Text(false), "a     b\n日本  x\né     x\n");
}

TEST(RowTable, CutsWithDotsWhereThereIsNoUnicode) {
  RowTable table({"only"}, 20, false);
  table.Add({Text(std::string(100, 'x'))});
  EXPECT_EQ(table.Text(false), "only\n" + std::string(17, 'x') + "...\n");
}

TEST(DisplayWidth, KnowsWideAndCombiningCharacters) {
  EXPECT_EQ(DisplayWidth("abc"), 3U);
  EXPECT_EQ(DisplayWidth("e\u0301"), 1U);
  EXPECT_EQ(DisplayWidth("日本"), 4U);
  EXPECT_EQ(DisplayWidth("😀"), 2U);
}

TEST(CutToWidth, NeverShowsHalfACharacter) {
  EXPECT_EQ(CutToWidth("日本語", 4, "…"), "日…");
  EXPECT_EQ(CutToWidth("日本語", 6, "…"), "日本語");
  EXPECT_EQ(CutToWidth("abc", 2, "…"), "a…");
}

}  // namespace
}  // namespace corvo::telemetry::host
