#pragma once

#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// The directory whose databases a command is about.
struct DataDirectory {
  std::filesystem::path path;  ///< absolute; symbolic links and ".." as they were given
  std::string origin;          ///< who named it: "--data-dir", "CORVO_TELEMETRY_DATA_DIR" or "default"
  std::string problem;         ///< why it cannot be used and what to do, one sentence; empty when it can be used
};

/// Finds the directory and looks whether it can be listed and entered. Changes nothing; throws on lack of memory only.
///
/// @param option the value of --data-dir in the platform's narrow encoding; empty when it was not given: then the
/// environment variable, else the platform's own directory.
[[nodiscard]] DataDirectory ResolveDataDirectory(const std::string& option);

}  // namespace corvo::telemetry::host
