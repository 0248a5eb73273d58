#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/error.h"
#include "storage/result_code.h"

struct sqlite3;

namespace corvo::shared {

/// The `type` of every record of the storage.
inline constexpr const char* kFailureType = "sqlite3";

/// The words with which SQLite reports a missing table, and by which callers recognise one.
inline constexpr std::string_view kMissingTableText = "no such table:";

/// Whether SQLite means by this code and message that a table of the statement is missing.
[[nodiscard]] bool ReportsMissingTable(std::int64_t code, std::string_view what) noexcept;

/// The connection's latest failure: SQLite's extended code and message.
[[nodiscard]] telemetry::common::Error Failure(sqlite3* handle);

/// A failure that the storage itself found: SQLite's general message for the code, then `detail`.
[[nodiscard]] telemetry::common::Error Failure(ResultCode code, const std::string& detail);

/// As above, for an extended code.
[[nodiscard]] telemetry::common::Error Failure(int extended_code, const std::string& detail);

}  // namespace corvo::shared
