#pragma once

#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// The names of the log levels, from nothing to everything.
[[nodiscard]] const std::vector<std::string>& LogLevels();

constexpr const char* kDefaultLogLevel = "error";

/// Initialises the process's logger: records up to `level` go to `file`, or to standard error when it is empty.
///
/// @param level empty for the default level; standard error is then spared the records on missing tables, which every
///   pass writes and forgives.
/// @throws CommandFailure (`kUsage`) when the file cannot be written.
void StartLogging(const std::string& level, const std::string& file);

}  // namespace corvo::telemetry::host
