#pragma once

#include <string>

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

/// The connection's latest failure: SQLite's extended code and message.
[[nodiscard]] telemetry::common::Error SqliteError(sqlite3* handle);

/// A failure that the storage itself found: SQLite's general message for the code, then `detail`.
[[nodiscard]] telemetry::common::Error SqliteError(int code, const std::string& detail);

}  // namespace corvo::shared
