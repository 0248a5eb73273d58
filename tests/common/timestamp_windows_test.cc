#include "common/timestamp.h"
#include "common/timestamp_fields.h"

namespace corvo::test {
namespace {

// The runtime would leave the field out without a word.
INSTANTIATE_TEST_SUITE_P(BeyondTheRuntime, FormatUtcTimeField,
                         testing::Values(FieldCase{"second", &std::tm::tm_sec, 61, ""},
                                         FieldCase{"year", &std::tm::tm_year, 8100, ""},
                                         FieldCase{"year", &std::tm::tm_year, 1'232'667, ""}));

}  // namespace
}  // namespace corvo::test
