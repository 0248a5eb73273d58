#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace corvo::test {

/// The JSON document that a command wrote, held against the schema of docs/schema that its members tell.
///
/// @throws std::exception when the text is no JSON, the document is of no known kind, or it does not fit its schema.
[[nodiscard]] nlohmann::json ParseHostDocument(const std::string& text);

}  // namespace corvo::test
