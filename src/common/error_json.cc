#include <algorithm>
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

std::string Serialise(const Error& error) {
  nlohmann::json object;
  object["version"] = 3;
  object["category"] = CategoryName(error.category);
  object["code"] = error.code;
  const auto set = [&object](const char* name, const std::string& text) {
    if (!text.empty()) {
      object[name] = text;
    }
  };
  set("what", error.what);
  set("type", error.type);
  set("origin", error.origin);
  return object.dump();
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
