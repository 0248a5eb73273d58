#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "common/error.h"

namespace corvo::telemetry::host {

/// Members keep the order in which they were written.
using Json = nlohmann::ordered_json;

/// The document's text for people and programs: indented, UTF-8; bytes that are not UTF-8 become U+FFFD, so that a
/// strange file name cannot spoil the document. What could speak to a terminal is escaped.
[[nodiscard]] std::string JsonText(const Json& document);

/// The same on one line.
[[nodiscard]] std::string JsonLine(const Json& document);

/// The record as a JSON object, also when its texts are not UTF-8.
[[nodiscard]] Json ErrorJson(const common::Error& error);

/// The name of the category, as records spell it.
[[nodiscard]] const char* CategoryName(common::ErrorCategory category);

/// The record that a JSON object holds: the inverse of the above. What is missing or of another type reads as empty.
[[nodiscard]] common::Error ReadError(const Json& object);

}  // namespace corvo::telemetry::host
