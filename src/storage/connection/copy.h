#pragma once

#include <string>

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

/// Copies the open database to a new file, by SQLite's online backup. Other connections may write in between until that
/// has made it begin anew a few times; then a read lock holds them off to its end. Ends when statements are
/// interrupted.
///
/// @param file in UTF-8.
[[nodiscard]] telemetry::common::Error CopyDatabase(sqlite3* source, const std::string& file);

}  // namespace corvo::shared
