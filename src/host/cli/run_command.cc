#include <fmt/core.h>

#include <chrono>
#include <cstdint>
#include <filesystem>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/inventory.h"
#include "host/pass/loaded_module.h"
#include "host/pass/logging.h"
#include "host/pass/pass_runner.h"
#include "host/platform/platform.h"
#include "host/show/run_json.h"
#include "host/show/run_text.h"
#include "host/show/standard_error.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

void RequireDirectory(const fs::path& directory) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    const std::string reason = fs::exists(directory, error) ? "is not a directory" : "does not exist";
    throw CommandFailure(kNoDataDirectory,
                         fmt::format("the data directory {} {}; name the directory that holds the .db "
                                     "files with --data-dir",
                                     common::Utf8(directory), reason));
  }
}

shared::StorageOptions StorageOptionsOf(const RunOptions& options) {
  shared::StorageOptions storage = shared::GetStorageOptions();
  storage.data_directory = options.data_dir;
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

// One line a database, however many of its tables share the trouble.
void TellProblems(const std::vector<DatabaseCount>& databases) {
  for (const DatabaseCount& database : databases) {
    for (const TableCount& table : database.tables) {
      if (!table.problem.empty()) {
        Tell(fmt::format("cannot count the rows of {}: {}", common::Utf8(database.path), table.problem));
        break;
      }
    }
  }
}

}  // namespace

ExitCode RunCommand(const RunOptions& options) {
  const fs::path directory(options.data_dir);
  RequireDirectory(directory);
  const LogScope log(options.log_level, options.log_file);
  LoadedModule module(options.plugin.empty() ? DefaultModulePath() : fs::path(options.plugin));
  WarnOfMissingLocale();
  const shared::StorageOptionsScope storage(StorageOptionsOf(options));
  const CatalogueView catalogue = ReadCatalogue();
  RunReport report;
  report.before = TakeInventory(catalogue, directory);
  TellProblems(report.before);
  report.passes = RunPasses(module.Module(), options.passes, IsTerminal(stderr));
  report.after = TakeInventory(catalogue, directory);
  fmt::print("{}", options.json ? RunDocument(report) : RunText(report, UsesColour(stdout)));
  return report.Result().Failed() ? kPassFailed : kDone;
}

}  // namespace corvo::telemetry::host
