#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace corvo::test {

/// A JSON Schema (draft 2020-12) as far as this project writes them: type, enum, const, minimum, pattern, required,
/// properties, additionalProperties, items, and $ref to #/$defs. A schema that uses any other keyword cannot be made,
/// so that none is taken to demand something that nobody checks.
class JsonSchema {
 public:
  /// @throws std::runtime_error naming the keyword that is not known, or the reference that leads nowhere.
  explicit JsonSchema(nlohmann::json schema);

  /// Reads the schema of a file.
  [[nodiscard]] static JsonSchema FromFile(const std::filesystem::path& file);

  /// What is wrong with the document, each with the place in it: empty for a valid one.
  [[nodiscard]] std::vector<std::string> Problems(const nlohmann::json& document) const;

 private:
  nlohmann::json schema_;
};

}  // namespace corvo::test
