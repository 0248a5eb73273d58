#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "host/facts/data_directory.h"
#include "host/platform/interruption.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {

// What the commands that work on a data directory have in common.

/// Bounds for files that anybody may have written; 0 is without bound, and does not wait for a lock.
struct Bounds {
  int time_limit_s = 600;     ///< of one statement
  int memory_limit_mb = 512;  ///< that SQLite may hold, in units of 1,000,000 bytes
  int busy_timeout_s = 5;     ///< of one wait for a lock
};

/// Adds --data-dir; the value stays empty when it is not given.
void AddDataDirectory(CLI::App& command, std::string& value);

/// Adds --time-limit, --memory-limit and --busy-timeout, with the defaults that the bounds hold.
void AddBounds(CLI::App& command, Bounds& bounds);

/// @throws CommandFailure (`kNoDataDirectory`) when there is none that can be used.
[[nodiscard]] DataDirectory RequireDataDirectory(const std::string& option);

/// The options in force, with this directory and these bounds.
[[nodiscard]] shared::StorageOptions StorageOptionsOf(const Bounds& bounds, const std::filesystem::path& directory);

/// As above, for commands that only look: files are opened for reading only and not looked through for damage first.
[[nodiscard]] shared::StorageOptions ReadOnlyOptionsOf(const Bounds& bounds, const std::filesystem::path& directory);

/// Statements end when the user asks for it, and run again when the scope is over.
class Interruptions {
 public:
  Interruptions();
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions();

 private:
  InterruptionScope scope_;
};

/// @throws CommandFailure with the exit code of the signal when the user has interrupted the command.
void RequireNoInterruption();

}  // namespace corvo::telemetry::host
