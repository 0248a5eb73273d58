#include "host/show/paragraphs.h"

#include <gtest/gtest.h>

namespace corvo::telemetry::host {
namespace {

TEST(Indented, EndsLinesBeforeTheWordThatDoesNotFit) {
  EXPECT_EQ(Indented("one two three", 2, 9), "  one two\n  three\n");
  EXPECT_EQ(Indented("one two three", 2, 8), "  one\n  two\n  three\n");
}

TEST(Indented, NeverCutsAWord) { EXPECT_EQ(Indented("a verylongword b", 0, 4), "a\nverylongword\nb\n"); }

TEST(Indented, CountsCharactersNotBytes) { EXPECT_EQ(Indented("äöü ß", 0, 5), "äöü ß\n"); }

}  // namespace
}  // namespace corvo::telemetry::host
