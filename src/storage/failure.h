#pragma once

#include <string>
#include <string_view>

#include "common/error.h"
#include "storage/result_code.h"

struct sqlite3;

namespace corvo::shared {

/// The words with which SQLite reports a missing table, and by which callers recognise one.
inline constexpr std::string_view kMissingTableText = "no such table:";

/// The connection's latest failure: SQLite's extended code and message.
[[nodiscard]] telemetry::common::Error Failure(sqlite3* handle);

/// A failure that the storage itself found: SQLite's general message for the code, then `detail`.
[[nodiscard]] telemetry::common::Error Failure(ResultCode code, const std::string& detail);

/// As above, for an extended code.
[[nodiscard]] telemetry::common::Error Failure(int extended_code, const std::string& detail);

}  // namespace corvo::shared
