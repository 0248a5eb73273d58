#include <cstring>
#include <nlohmann/json.hpp>

#include "common/error.h"

namespace corvo::telemetry::common {
namespace {

const char* CategoryName(ErrorCategory category) {
  switch (category) {
    case EC_NoError:
      return "EC_NoError";
    case EC_Std:
      return "EC_Std";
    case EC_WinApi:
      return "EC_WinApi";
    case EC_SEH:
      return "EC_SEH";
    case EC_Custom:
      return "EC_Custom";
    case EC_Unknown:
      break;
  }
  return "EC_Unknown";
}

std::string Member(const char* name, const std::string& text) {
  return text.empty() ? std::string() : std::string(",\"") + name + "\":" + nlohmann::json(text).dump();
}

// Assembled here, in byte order of the names: the library's object allocates while it is destroyed, and running out of
// memory there would end the host's process.
std::string Serialise(const Error& error) {
  return std::string("{\"category\":\"") + CategoryName(error.category) + "\",\"code\":" + std::to_string(error.code) +
         Member("origin", error.origin) + Member("type", error.type) + ",\"version\":3" + Member("what", error.what) +
         "}";
}

}  // namespace

std::int32_t ErrorToJson(const Error& error, char* buffer) {
  const std::string text = Serialise(error);
  if (buffer != nullptr) {
    std::memcpy(buffer, text.c_str(), text.size() + 1);
  }
  return static_cast<std::int32_t>(text.size() + 1);
}

std::string ErrorText(const Error& error) {
  try {
    return Serialise(error);
  } catch (...) {
    return "(null)";
  }
}

}  // namespace corvo::telemetry::common
