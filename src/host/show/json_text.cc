#include "host/show/json_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "common/text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::array kCategories = {"EC_NoError", "EC_Unknown", "EC_Std", "EC_WinApi", "EC_SEH", "EC_Custom"};

common::ErrorCategory ReadCategory(const std::string& name) {
  const auto* const found = std::find(kCategories.begin(), kCategories.end(), name);
  return found == kCategories.end() ? common::EC_Unknown
                                    : static_cast<common::ErrorCategory>(found - kCategories.begin());
}

std::string ReadText(const Json& object, const char* name) {
  const auto member = object.find(name);
  return member != object.end() && member->is_string() ? member->get<std::string>() : "";
}

/// All that could speak to a terminal begins with one of these bytes; most documents have none.
bool MayNeedEscapes(const std::string& text) {
  constexpr unsigned char kDelete = 0x7f;
  return std::any_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) >= kDelete; });
}

std::string Dump(const Json& document, int indentation) {
  std::string text = document.dump(indentation, ' ', false, Json::error_handler_t::replace);
  return MayNeedEscapes(text) ? EscapedInJson(text) : text;
}

}  // namespace

std::string JsonText(const Json& document) { return Dump(document, 2); }

std::string JsonLine(const Json& document) { return Dump(document, -1); }

Json ErrorJson(const common::Error& error) {
  common::Error valid = error;
  for (std::string* text : {&valid.what, &valid.type, &valid.origin}) {
    *text = common::ValidUtf8(*text);
  }
  return Json::parse(common::ErrorText(valid));
}

const char* CategoryName(common::ErrorCategory category) { return kCategories.at(static_cast<std::size_t>(category)); }

common::Error ReadError(const Json& object) {
  common::Error error;
  error.category = ReadCategory(ReadText(object, "category"));
  const auto code = object.find("code");
  error.code = code != object.end() && code->is_number_integer() ? code->get<std::int64_t>() : 0;
  error.what = ReadText(object, "what");
  error.type = ReadText(object, "type");
  error.origin = ReadText(object, "origin");
  return error;
}

}  // namespace corvo::telemetry::host
