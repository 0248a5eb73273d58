#pragma once

#include <cstdint>
#include <string>

namespace corvo::telemetry::host {

/// 1234567 as "1,234,567".
[[nodiscard]] std::string WithSeparators(std::int64_t number);

/// A size in decimal units, as the limits are counted: "512 B", "1.5 kB", "38.2 MB".
[[nodiscard]] std::string HumanBytes(std::int64_t bytes);

/// A text of unknown origin for a terminal: control characters, with which it could say anything there, become '?'.
[[nodiscard]] std::string Printable(std::string text);

/// "1 row", "12 rows".
[[nodiscard]] std::string Counted(std::int64_t number, const std::string& noun);

}  // namespace corvo::telemetry::host
