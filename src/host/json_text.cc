#include "host/json_text.h"

namespace corvo::telemetry::host {

std::string JsonText(const Json& document) { return document.dump(2, ' ', false, Json::error_handler_t::replace); }

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace corvo::telemetry::host
