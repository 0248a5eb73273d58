#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/facts/directory_state.h"
#include "host/platform/platform.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"
#include "host/show/status/status_json.h"
#include "host/show/status/status_text.h"

namespace corvo::telemetry::host {
namespace {

struct StatusOptions {
  std::string data_dir;
  std::vector<std::string> databases;  ///< the only ones to show, as the catalogue spells them; empty: all
  bool all = false;                    ///< every table
  bool check = false;
  Bounds bounds;
};

constexpr const char* kFooter =
    "OF LIMIT: rows, or days, of those that it may have; A DAY: rows that come in; FULL IN: days until the row limit "
    "trims the table; ENGINE: the size that the size limit goes by, where it is another than the file's.\n"
    "\n"
    "Reads only: it works while collectors write, and in a directory that must not be written.\n"
    "\n"
    "With --check exit code 3: a database or table is over its limit (by age: for more than a day), holds rows that "
    "can never expire, or cannot be read or cleaned. A directory without databases has nothing over a limit: exit code "
    "0, and standard error says that nothing was checked.\n";

DirectoryState ReadState(const StatusOptions& options) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const Interruptions interruptions;
  const shared::StorageOptionsScope storage(ReadOnlyOptionsOf(options.bounds, directory.path));
  DirectoryState state = ReadDirectoryState(directory.path, directory.origin, options.databases, std::time(nullptr));
  RequireNoInterruption();
  return state;
}

bool IsUnread(const DatabaseState& database) {
  return database.problem || std::any_of(database.tables.begin(), database.tables.end(),
                                         [](const TableState& table) { return table.unread; });
}

ExitCode ExitCodeOf(const DirectoryState& state, bool check) {
  const auto needs_attention = [&](const DatabaseState& database) { return NeedsAttention(database, state.now); };
  if (check) {
    return std::any_of(state.databases.begin(), state.databases.end(), needs_attention) ? kFindings : kDone;
  }
  return std::any_of(state.databases.begin(), state.databases.end(), &IsUnread) ? kPassFailed : kDone;
}

/// A script that checks a wrong directory is to hear of it, although nothing there is over a limit.
void TellOfNothingToCheck(const DirectoryState& state) {
  if (std::all_of(state.databases.begin(), state.databases.end(),
                  [](const DatabaseState& database) { return database.missing; })) {
    Tell(fmt::format("nothing was checked: {} holds none of the databases", common::Utf8(state.directory)));
  }
}

ExitCode Show(const StatusOptions& options, bool json) {
  // What a run would delete holds only where it can be run.
  if (const std::string hint = MissingLocaleHint(); !hint.empty()) {
    Tell(hint);
  }
  const DirectoryState state = ReadState(options);
  const Display display{.width = OutputWidth(), .colour = UsesColour(stdout), .blocks = ShowsBlocks(stdout)};
  Print(json ? StatusDocument(state) : StatusText(state, options.all, display));
  if (options.check) {
    TellOfNothingToCheck(state);
  }
  return ExitCodeOf(state, options.check);
}

}  // namespace

Action AddStatus(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("status", "Show how databases and tables stand against their limits");
  const auto options = std::make_shared<StatusOptions>();
  AddDataDirectory(command, options->data_dir);
  AddDatabases(command, {"--database", "NAME", "Show this database alone; several times for several"},
               options->databases);
  command.add_flag("--all", options->all, "Show every table, not only those that matter most");
  command.add_flag("--check", options->check, "End with code 3 when something is over its limit or cannot be cleaned");
  AddBounds(command, options->bounds);
  SetHelp(command,
          {{"status --data-dir try", "each database, and the tables that matter most"},
           {"status --data-dir try --all --database HealthLog", "every table of one database"},
           {"status --data-dir try --check", "for scripts: exit code 3 when something needs attention"}},
          kFooter);
  return [options](bool json) { return Show(*options, json); };
}

}  // namespace corvo::telemetry::host
