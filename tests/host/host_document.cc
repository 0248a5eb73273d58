#include "host/host_document.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "support/json_schema.h"

namespace corvo::test {
namespace {

/// A member that documents of one kind alone have, and the name of their schema.
constexpr std::array<std::pair<const char*, const char*>, 4> kKinds = {
    {{"result", "run"}, {"contracts", "contracts"}, {"seed", "generate"}, {"text", "text"}}};

JsonSchema SchemaOf(const nlohmann::json& document) {
  if (document.contains("kind")) {
    return JsonSchema::FromFile(std::string(CORVO_SCHEMA_DIR) + "/" + document["kind"].get<std::string>() +
                                ".schema.json");
  }
  for (const auto& [member, schema] : kKinds) {
    if (document.contains(member)) {
      return JsonSchema::FromFile(std::string(CORVO_SCHEMA_DIR) + "/" + schema + ".schema.json");
    }
  }
  throw std::runtime_error("a document of no known kind: " + document.dump());
}

}  // namespace

nlohmann::json ParseHostDocument(const std::string& text) {
  nlohmann::json document = nlohmann::json::parse(text);
  std::string problems;
  for (const std::string& problem : SchemaOf(document).Problems(document)) {
    problems += "\n" + problem;
  }
  if (!problems.empty()) {
    throw std::runtime_error("the document does not fit its schema:" + problems);
  }
  return document;
}

}  // namespace corvo::test
