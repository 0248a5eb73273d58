#include "host/show/fold.h"

#include <gmock/gmock.h>

namespace corvo::telemetry::host {
namespace {

using testing::ElementsAre;

TEST(Folded, BreaksAtBlanksAndIndentsWhatFollows) {
  EXPECT_THAT(Folded("one two three four", 9, 2), ElementsAre("one two", "  three", "  four"));
}

TEST(Folded, LeavesWhatFitsAsItIs) { EXPECT_THAT(Folded("one two", 7), ElementsAre("one two")); }

TEST(Folded, CountsCharactersNotBytes) { EXPECT_THAT(Folded("ää öö üü", 8), ElementsAre("ää öö üü")); }

TEST(Folded, KeepsLongWordsWhole) { EXPECT_THAT(Folded("a abcdefghij b", 5), ElementsAre("a", "abcdefghij", "b")); }

TEST(Folded, TakesALineFeedForABlank) { EXPECT_THAT(Folded("one\ntwo", 7), ElementsAre("one two")); }

TEST(Indented, EndsLinesBeforeTheWordThatDoesNotFit) {
  EXPECT_EQ(Indented("one two three", 2, 9), "  one two\n  three\n");
  EXPECT_EQ(Indented("one two three", 2, 8), "  one\n  two\n  three\n");
}

TEST(Indented, NeverCutsAWord) { EXPECT_EQ(Indented("a verylongword b", 0, 4), "a\nverylongword\nb\n"); }

TEST(Indented, CountsCharactersNotBytes) { EXPECT_EQ(Indented("äöü ß", 0, 5), "äöü ß\n"); }

}  // namespace
}  // namespace corvo::telemetry::host
