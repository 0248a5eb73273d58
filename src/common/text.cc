#include "common/text.h"

#include <nlohmann/json.hpp>

namespace corvo::telemetry::common {

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::filesystem::path PathFromUtf8(std::string_view text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

// The JSON library replaces what it cannot write; reading its text back leaves the repaired one.
std::string ValidUtf8(std::string_view text) {
  using nlohmann::json;
  return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
}

}  // namespace corvo::telemetry::common
