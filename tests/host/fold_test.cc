#include "host/show/fold.h"

#include <gmock/gmock.h>

namespace corvo::telemetry::host {
namespace {

using testing::ElementsAre;

TEST(Folded, BreaksAtBlanksAndIndentsWhatFollows) {
  EXPECT_THAT(Folded("one two three four", 9), ElementsAre("one two", "  three", "  four"));
}

TEST(Folded, LeavesWhatFitsAsItIs) { EXPECT_THAT(Folded("one two", 7), ElementsAre("one two")); }

TEST(Folded, CountsCharactersNotBytes) { EXPECT_THAT(Folded("ää öö üü", 8), ElementsAre("ää öö üü")); }

TEST(Folded, KeepsLongWordsWhole) { EXPECT_THAT(Folded("a abcdefghij b", 5), ElementsAre("a", "  abcdefghij", "  b")); }

}  // namespace
}  // namespace corvo::telemetry::host
