#pragma once

#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// The names of the log levels, from nothing to everything.
[[nodiscard]] const std::vector<std::string>& LogLevels();

/// Initialises the process's logger: records up to `level` go to `file`, or to standard error when it is empty.
///
/// @throws CommandFailure (`kUsage`) when the file cannot be written.
void StartLogging(const std::string& level, const std::string& file);

}  // namespace corvo::telemetry::host
