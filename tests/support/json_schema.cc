#include "support/json_schema.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <regex>
#include <set>
#include <stdexcept>

namespace corvo::test {
namespace {

using nlohmann::json;

const std::set<std::string>& KnownKeywords() {
  static const std::set<std::string> known = {
      "$schema", "$id",     "$defs",   "$ref",     "title",      "description",          "type",  "enum",
      "const",   "minimum", "pattern", "required", "properties", "additionalProperties", "items", "anyOf"};
  return known;
}

const json& Referred(const json& root, const std::string& reference) {
  const std::string prefix = "#/$defs/";
  if (reference.rfind(prefix, 0) != 0 || !root.contains("/$defs"_json_pointer) ||
      !root["$defs"].contains(reference.substr(prefix.size()))) {
    throw std::runtime_error("schema: " + reference + " leads nowhere");
  }
  return root["$defs"][reference.substr(prefix.size())];
}

bool IsOfType(const json& value, const std::string& type) {
  // A number without a fraction is an integer, however it is written.
  const bool whole =
      value.is_number_integer() || (value.is_number_float() && std::trunc(value.get<double>()) == value.get<double>());
  const std::array<std::pair<const char*, bool>, 7> types = {{{"object", value.is_object()},
                                                              {"array", value.is_array()},
                                                              {"string", value.is_string()},
                                                              {"boolean", value.is_boolean()},
                                                              {"null", value.is_null()},
                                                              {"number", value.is_number()},
                                                              {"integer", whole}}};
  const auto* const found =
      std::find_if(types.begin(), types.end(), [&](const auto& entry) { return entry.first == type; });
  if (found == types.end()) {
    throw std::runtime_error("schema: the type " + type + " is not known");
  }
  return found->second;
}

bool IsOfAnyType(const json& value, const json& types) {
  if (types.is_string()) {
    return IsOfType(value, types);
  }
  // Each is looked at, so that one that is not known is found.
  return std::count_if(types.begin(), types.end(), [&value](const json& type) { return IsOfType(value, type); }) > 0;
}

// Looks through a schema and all those within it.
void CheckKeywords(const json& root, const json& schema) {
  if (schema.is_boolean()) {
    return;
  }
  for (const auto& [keyword, value] : schema.items()) {
    if (!KnownKeywords().contains(keyword)) {
      throw std::runtime_error("schema: the keyword " + keyword + " is not known");
    }
    if (keyword == "$ref") {
      static_cast<void>(Referred(root, value));
    } else if (keyword == "type") {
      static_cast<void>(IsOfAnyType(nullptr, value));
    } else if (keyword == "properties" || keyword == "$defs" || keyword == "anyOf") {
      std::for_each(value.begin(), value.end(), [&root](const json& part) { CheckKeywords(root, part); });
    } else if (keyword == "items" || keyword == "additionalProperties") {
      CheckKeywords(root, value);
    }
  }
}

/// One look at a document, or at a part of it.
class Look {
 public:
  explicit Look(const json& root) : root_(root) {}

  void At(const json& schema, const json& value, const std::string& place) {
    if (schema.is_boolean()) {
      Expect(schema, place, "is not allowed");
      return;
    }
    if (schema.contains("$ref")) {
      At(Referred(root_, schema["$ref"]), value, place);
    }
    AtValue(schema, value, place);
    if (schema.contains("anyOf")) {
      Expect(FitsAny(schema["anyOf"], value, place), place, ": " + value.dump() + " does not fit anyOf");
    }
    if (value.is_object()) {
      AtMembers(schema, value, place);
    }
    if (value.is_array() && schema.contains("items")) {
      for (std::size_t index = 0; index < value.size(); ++index) {
        At(schema["items"], value[index], place + "/" + std::to_string(index));
      }
    }
  }

  std::vector<std::string> problems;

 private:
  void Expect(bool holds, const std::string& place, const std::string& problem) {
    if (!holds) {
      problems.push_back((place.empty() ? "the document" : place) + " " + problem);
    }
  }

  [[nodiscard]] bool FitsAny(const json& schemas, const json& value, const std::string& place) const {
    return std::any_of(schemas.begin(), schemas.end(), [&](const json& schema) {
      Look part(root_);
      part.At(schema, value, place);
      return part.problems.empty();
    });
  }

  void AtValue(const json& schema, const json& value, const std::string& place) {
    for (const auto& [keyword, wanted] : schema.items()) {
      const std::string rule = ": " + value.dump() + " does not fit " + keyword + " " + wanted.dump();
      if (keyword == "type") {
        Expect(IsOfAnyType(value, wanted), place, rule);
      } else if (keyword == "const") {
        Expect(value == wanted, place, rule);
      } else if (keyword == "enum") {
        Expect(std::find(wanted.begin(), wanted.end(), value) != wanted.end(), place, rule);
      } else if (keyword == "minimum" && value.is_number()) {
        Expect(value >= wanted, place, rule);
      } else if (keyword == "pattern" && value.is_string()) {
        Expect(std::regex_search(value.get<std::string>(), std::regex(wanted.get<std::string>())), place, rule);
      }
    }
  }

  void AtMembers(const json& schema, const json& value, const std::string& place) {
    for (const json& name : schema.value("required", json::array())) {
      Expect(value.contains(name.get<std::string>()), place, "lacks " + name.dump());
    }
    const json properties = schema.value("properties", json::object());
    for (const auto& [name, member] : value.items()) {
      if (properties.contains(name)) {
        At(properties[name], member, place + "/" + name);
      } else if (schema.contains("additionalProperties")) {
        At(schema["additionalProperties"], member, place + "/" + name);
      }
    }
  }

  const json& root_;
};

}  // namespace

JsonSchema::JsonSchema(json schema) : schema_(std::move(schema)) { CheckKeywords(schema_, schema_); }

JsonSchema JsonSchema::FromFile(const std::filesystem::path& file) {
  std::ifstream text(file);
  if (!text) {
    throw std::runtime_error("schema: cannot read " + file.string());
  }
  return JsonSchema(json::parse(text));
}

std::vector<std::string> JsonSchema::Problems(const json& document) const {
  Look look(schema_);
  look.At(schema_, document, "");
  return look.problems;
}

}  // namespace corvo::test
