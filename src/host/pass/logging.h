#pragma once

#include <plog/Severity.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/error.h"

namespace corvo::telemetry::host {

/// The names of the log levels, from nothing to everything. `brief` holds the records of errors, without those named
/// with `SpareInLog`.
[[nodiscard]] const std::vector<std::string>& LogLevels();

inline constexpr const char* kDefaultLogLevel = "brief";
inline constexpr const char* kDefaultLogFileLevel = "error";

/// Where the process's log goes for as long as the object lives; before and after, the host writes none. One at a time.
class LogScope {
 public:
  /// Records up to `level` go to `file`, or to standard error when it is empty.
  ///
  /// @param level one of `LogLevels`; empty for the default of standard error or of a file.
  /// @throws CommandFailure (`kUsage`) when the file cannot be written.
  LogScope(const std::string& level, const std::filesystem::path& file);
  LogScope(const LogScope&) = delete;
  LogScope& operator=(const LogScope&) = delete;
  ~LogScope();

 private:
  plog::Severity former_;
};

/// Whether any record was lost, up to now, because it could not be written. `errno` is then the reason of the first
/// loss. A log that lacks some is no reason to stop the work half-way.
[[nodiscard]] bool LogLost();

/// Names a failure that every pass meets and forgives, such as a missing table: nobody who did not ask for the log
/// wants to read of it. May be called from any thread, before the failure is logged.
void SpareInLog(const common::Error& failure);

}  // namespace corvo::telemetry::host
