#include <fmt/core.h>

#include <memory>
#include <stdexcept>

#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/facts/record/history.h"
#include "host/platform/platform.h"
#include "host/show/standard_output.h"
#include "host/show/verify/history_text.h"

namespace corvo::telemetry::host {
namespace {

constexpr const char* kFooter =
    "The newest run comes last. FREED is what the files with their write-ahead logs have shrunk by, NOT COMPACTED the "
    "number of databases that --compact-when-free or --max-stall spared. A run that was killed has left no record.";

struct HistoryOptions {
  std::string data_dir;
  std::uint32_t limit = 20;
};

std::vector<RunRecord> LastRuns(const std::filesystem::path& directory, std::size_t limit) {
  std::vector<RunRecord> runs;
  try {
    runs = ReadHistory(directory);
  } catch (const std::runtime_error& failure) {
    throw CommandFailure(kPassFailed, fmt::format("cannot read the history: {}", failure.what()));
  }
  if (runs.size() > limit) {
    runs.erase(runs.begin(), runs.end() - static_cast<std::ptrdiff_t>(limit));
  }
  return runs;
}

ExitCode Show(const HistoryOptions& options, bool json) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const std::vector<RunRecord> runs = LastRuns(directory.path, options.limit);
  Print(json ? HistoryDocument(directory, runs) : HistoryText(directory, runs, UsesColour(stdout)));
  return kDone;
}

}  // namespace

Action AddHistory(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("history", "Show the last runs: when, how long, what went, how they ended");
  const auto options = std::make_shared<HistoryOptions>();
  AddDataDirectory(command, options->data_dir);
  AddNumber(command, {"--limit", "NUMBER", "Most runs to show"}, options->limit, 1U,
            static_cast<std::uint32_t>(kMostRuns));
  SetHelp(command,
          {{"history --data-dir try", "the last 20 runs"}, {"history --data-dir try --limit 1", "the last one"}},
          kFooter);
  return [options](bool json) { return Show(*options, json); };
}

}  // namespace corvo::telemetry::host
