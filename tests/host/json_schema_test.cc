#include "support/json_schema.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace corvo::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

struct Rule {
  const char* schema;
  const char* fits;
  const char* offends;
};

class SchemaRule : public testing::TestWithParam<Rule> {};

TEST_P(SchemaRule, LetsPassWhatFitsAndNothingElse) {
  const JsonSchema schema(json::parse(GetParam().schema));
  for (const json& value : json::parse(GetParam().fits)) {
    EXPECT_THAT(schema.Problems(value), IsEmpty()) << value;
  }
  for (const json& value : json::parse(GetParam().offends)) {
    EXPECT_EQ(schema.Problems(value).size(), 1U) << value;
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, SchemaRule,
    testing::Values(
        Rule{R"({"type": "integer"})", "[0, -3, 2.0, 18446744073709551615]", R"([1.5, "1", null, true, [1]])"},
        Rule{R"({"type": "number"})", "[0, 1.5]", R"(["1", null, true])"},
        Rule{R"({"type": "string"})", R"(["", "text"])", "[1, null, {}]"},
        Rule{R"({"type": "boolean"})", "[true, false]", "[0, null]"},
        Rule{R"({"type": "object"})", R"([{}, {"a": 1}])", "[[], null]"},
        Rule{R"({"type": ["integer", "null"]})", "[1, null]", "[1.5, {}]"},
        Rule{R"({"enum": ["a", 1]})", R"(["a", 1])", R"(["b", 2, null])"},
        Rule{R"({"const": 1})", "[1]", R"([2, "1"])"},
        Rule{R"({"minimum": 0})", R"([0, 0.5, 7, "no number", null])", "[-1, -0.5]"},
        Rule{R"({"pattern": "^a+$"})", R"(["a", "aa", 7])", R"(["", "ab"])"},
        Rule{R"({"required": ["a"]})", R"([{"a": null}, [], 1])", R"([{}, {"b": 1}])"},
        Rule{R"({"properties": {"a": {"type": "null"}}})", R"([{}, {"a": null, "b": 1}])", R"([{"a": 1}])"},
        Rule{R"({"properties": {"a": true}, "additionalProperties": false})", R"([{}, {"a": 1}])", R"([{"b": 1}])"},
        Rule{R"({"additionalProperties": {"type": "null"}})", R"([{}, {"a": null}])", R"([{"a": 1}])"},
        Rule{R"({"anyOf": [{"type": "null"}, {"minimum": 3}]})", "[null, 3]", "[2]"},
        Rule{R"({"items": {"type": "null"}})", "[[], [null, null], 1]", "[[null, 1]]"},
        Rule{R"({"$ref": "#/$defs/n", "minimum": 2, "$defs": {"n": {"type": "integer"}}})", "[2]", "[1, 2.5]"}));

TEST(SchemaProblems, NameThePlace) {
  const JsonSchema schema(json::parse(R"({"properties": {"a": {"items": {"required": ["b"]}}}})"));
  EXPECT_THAT(schema.Problems(json::parse(R"({"a": [{"b": 1}, {}]})")), ElementsAre("/a/1 lacks \"b\""));
}

TEST(SchemaThatNobodyUnderstands, CannotBeMade) {
  for (const char* text :
       {R"({"maximum": 1})", R"({"properties": {"a": {"minLength": 1}}})", R"({"items": {"allOf": []}})",
        R"({"$defs": {"a": {"format": "uri"}}})", R"({"additionalProperties": {"oneOf": []}})", R"({"type": "text"})",
        R"({"type": ["null", "text"]})", R"({"$ref": "#/$defs/missing"})", R"({"$ref": "other.json", "$defs": {}})"}) {
    EXPECT_THROW(JsonSchema(json::parse(text)), std::runtime_error) << text;
  }
}

}  // namespace
}  // namespace corvo::test
