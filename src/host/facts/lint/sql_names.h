#pragma once

#include <string>

namespace corvo::telemetry::host {

/// Whether the name has to be quoted where SQL is to read it as a table's: it holds more than letters, digits and
/// underscores, begins with a digit, or is a word of SQLite's language (https://www.sqlite.org/lang_keywords.html).
[[nodiscard]] bool NeedsQuotes(const std::string& name);

}  // namespace corvo::telemetry::host
