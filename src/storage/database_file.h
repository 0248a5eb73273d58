#pragma once

#include <filesystem>

#include "common/error.h"

namespace corvo::shared {

/// Looks at what a database path leads to, without opening it, and follows its symbolic links.
///
/// Only a regular file is accepted, and beside it only regular files under the names of SQLite's journals: opening a
/// FIFO or a device can wait for ever, or do more than read.
///
/// @param resolved the path without symbolic links; unchanged on failure.
telemetry::common::Error CheckDatabaseFile(const std::filesystem::path& path, std::filesystem::path& resolved);

}  // namespace corvo::shared
