#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvo::telemetry::host {

/// 1234567 as "1,234,567".
[[nodiscard]] std::string WithSeparators(std::int64_t number);

/// A size in decimal units, as the limits are counted: "512 B", "1.5 kB", "38.2 MB".
[[nodiscard]] std::string HumanBytes(std::int64_t bytes);

/// A text of unknown origin, such as a file's name or a schema's text, for a terminal. What could move the cursor,
/// change colours or turn the direction of reading there is written as an escape: `\x1b`, `\n`, `\u202e`. So is every
/// byte that is no UTF-8. A backslash stays: the result is for reading, and a second call changes nothing.
[[nodiscard]] std::string Printable(std::string_view text);

/// The text of a JSON document, valid UTF-8, in which what the above escapes is escaped as JSON does: whoever reads the
/// document finds the same values, and a terminal on which it is shown finds nothing to obey.
[[nodiscard]] std::string EscapedInJson(std::string_view document);

/// "1 row", "12 rows".
[[nodiscard]] std::string Counted(std::int64_t number, const std::string& noun);

}  // namespace corvo::telemetry::host
