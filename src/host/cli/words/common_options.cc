#include "host/cli/words/common_options.h"

#include <chrono>
#include <cstdint>

#include "host/cli/words/option_values.h"
#include "host/show/failure.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

void AddDataDirectory(CLI::App& command, std::string& value) {
  AddText(command,
          {"--data-dir", "DIR",
           "Directory that holds the databases; CORVO_TELEMETRY_DATA_DIR, else the platform's, when not given"},
          value);
}

void AddBounds(CLI::App& command, Bounds& bounds) {
  AddNumber(command, {"--time-limit", "SECONDS", "Longest that one statement may run; 0 for any time"},
            bounds.time_limit_s, 0, 86'400);
  AddNumber(command, {"--memory-limit", "MB", "Most memory that SQLite may hold; 0 for any amount"},
            bounds.memory_limit_mb, 0, 1'000'000);
  AddNumber(command, {"--busy-timeout", "SECONDS", "Longest wait for a lock of another program; 0 for none"},
            bounds.busy_timeout_s, 0, 3'600);
}

DataDirectory RequireDataDirectory(const std::string& option) {
  DataDirectory directory = ResolveDataDirectory(option);
  if (!directory.problem.empty()) {
    throw CommandFailure(kNoDataDirectory, directory.problem);
  }
  return directory;
}

shared::StorageOptions StorageOptionsOf(const Bounds& bounds, const std::filesystem::path& directory) {
  shared::StorageOptions storage = shared::GetStorageOptions();
  storage.data_directory = directory.string();
  storage.busy_timeout = std::chrono::seconds(bounds.busy_timeout_s);
  storage.statement_time_limit = std::chrono::seconds(bounds.time_limit_s);
  storage.memory_limit = std::int64_t{bounds.memory_limit_mb} * 1'000'000;
  return storage;
}

shared::StorageOptions ReadOnlyOptionsOf(const Bounds& bounds, const std::filesystem::path& directory) {
  shared::StorageOptions storage = StorageOptionsOf(bounds, directory);
  storage.read_only = true;
  storage.check_soundness = false;
  return storage;
}

Interruptions::Interruptions() : scope_([](int /*signal*/) { shared::InterruptStatements(); }) {}

Interruptions::~Interruptions() { shared::AllowStatements(); }

void RequireNoInterruption() {
  if (const int signal = InterruptionScope::Signal(); signal != 0) {
    throw CommandFailure(InterruptedBy(signal), "interrupted: nothing was changed");
  }
}

}  // namespace corvo::telemetry::host
