#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/facts/data_directory.h"
#include "host/pass/directory_run.h"
#include "host/pass/loaded_module.h"
#include "host/pass/logging.h"
#include "host/platform/instance_lock.h"
#include "host/platform/interruption.h"
#include "host/platform/platform.h"
#include "host/platform/trust.h"
#include "host/show/run_json.h"
#include "host/show/run_text.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// Statements end when the user asks for it, and run again when the run is over.
class Interruptions {
 public:
  Interruptions() : scope_([](int) { shared::InterruptStatements(); }) {}
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() { shared::AllowStatements(); }

 private:
  InterruptionScope scope_;
};

shared::StorageOptions StorageOptionsOf(const RunOptions& options, const fs::path& directory) {
  shared::StorageOptions storage = shared::GetStorageOptions();
  storage.data_directory = directory.string();
  storage.busy_timeout = std::chrono::seconds(options.busy_timeout_s);
  storage.statement_time_limit = std::chrono::seconds(options.time_limit_s);
  storage.memory_limit = std::int64_t{options.memory_limit_mb} * 1'000'000;
  return storage;
}

void WarnOfMissingLocale() {
  if (const std::string hint = MissingLocaleHint(); !hint.empty()) {
    Tell(hint);
  }
}

/// Who may write to the directory can have a privileged user delete from any file.
void RequireTrust(const fs::path& directory, bool trusted) {
  const std::string others = trusted || !IsPrivileged() ? "" : WhoElseMayWrite(directory);
  if (!others.empty()) {
    throw CommandFailure(
        kNoDataDirectory,
        fmt::format("the data directory is not safe for a privileged user: {}; take the right to write "
                    "away from others, or say --trust-directory",
                    others));
  }
}

InstanceLock TakeLock(const fs::path& directory, int wait_s) {
  std::string holder;
  try {
    auto lock = InstanceLock::Wait(directory, std::chrono::seconds(wait_s), &shared::StatementsInterrupted, holder);
    if (lock) {
      return *std::move(lock);
    }
  } catch (const std::runtime_error& failure) {
    throw CommandFailure(kNoDataDirectory,
                         fmt::format("no run can begin in {}: {}", common::Utf8(directory), failure.what()));
  }
  if (const int signal = InterruptionScope::Signal(); signal != 0) {
    throw CommandFailure(InterruptedBy(signal), "interrupted while another run was waited for: " + holder);
  }
  throw CommandFailure(kAnotherRun, fmt::format("another run cleans {}: {}; wait for its end with --wait SECONDS",
                                                common::Utf8(directory), holder));
}

ExitCode ExitCodeOf(const RunReport& report) {
  if (report.signal != 0) {
    return InterruptedBy(report.signal);
  }
  return report.Result().Failed() || report.Cleaned() < report.databases.size() ? kPassFailed : kDone;
}

RunReport CleanUp(const RunOptions& options, const DataDirectory& directory) {
  RequireTrust(directory.path, options.trust_directory);
  const LogScope log(options.log_level, options.log_file);
  LoadedModule module(options.plugin.empty() ? DefaultModulePath() : fs::path(options.plugin));
  WarnOfMissingLocale();
  const Interruptions interruptions;
  const InstanceLock lock = TakeLock(directory.path, options.wait_s);
  const shared::StorageOptionsScope storage(StorageOptionsOf(options, directory.path));
  RunReport report = Run(module.Module(), {.directory = directory.path,
                                           .source = directory.origin,
                                           .only = options.databases,
                                           .passes = options.passes,
                                           .keep_going = options.keep_going,
                                           .show_progress = IsTerminal(stderr) && !options.quiet});
  report.signal = InterruptionScope::Signal();
  return report;
}

}  // namespace

ExitCode RunCommand(const RunOptions& options) {
  const DataDirectory directory = ResolveDataDirectory(options.data_dir);
  if (!directory.problem.empty()) {
    throw CommandFailure(kNoDataDirectory, directory.problem);
  }
  const RunReport report = CleanUp(options, directory);
  if (options.json) {
    Print(RunDocument(report));
  } else if (!options.quiet) {
    Print(RunText(report, UsesColour(stdout)));
  } else if (ExitCodeOf(report) != kDone) {
    for (std::string line : Failures(report)) {
      std::replace(line.begin(), line.end(), '\n', ' ');  // advice is folded for a page
      Tell(line);
    }
  }
  return ExitCodeOf(report);
}

}  // namespace corvo::telemetry::host
