#include <fmt/core.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/facts/explain/explanation.h"
#include "host/platform/platform.h"
#include "host/show/advice.h"
#include "host/show/explain/explain_json.h"
#include "host/show/explain/explain_text.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {
namespace {

struct ExplainOptions {
  std::string data_dir;  ///< empty: the environment's, else the platform's
  std::string table;     ///< as the catalogue spells it
  std::vector<std::int64_t> rowids;
  Bounds bounds;
};

std::string Text(const CannotExplain& failure) {
  std::string text = failure.what();
  if (failure.Cause()) {
    text += ". " + Advice(*failure.Cause());
  }
  return text;
}

Explanation Look(const ExplainOptions& options) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const Interruptions interruptions;
  const shared::StorageOptionsScope storage(ReadOnlyOptionsOf(options.bounds, directory.path));
  try {
    Explanation explanation = Explain(directory.path, options.table, options.rowids, std::time(nullptr));
    RequireNoInterruption();
    return explanation;
  } catch (const CannotExplain& failure) {
    RequireNoInterruption();
    throw CommandFailure(kPassFailed, Text(failure));
  }
}

ExitCode ShowExplanation(const ExplainOptions& options, bool json) {
  const Explanation explanation = Look(options);
  Print(json ? ExplainDocument(explanation) : ExplainText(explanation, OutputWidth(), UsesColour(stdout)));
  for (const MissingRow& row : explanation.missing_rows) {
    Tell(row.text);
  }
  return explanation.missing_rows.empty() ? kDone : kPassFailed;
}

}  // namespace

Action AddExplain(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("explain", "Show what limits a table, what goes next, and why");
  const auto options = std::make_shared<ExplainOptions>();
  AddTable(command, {"TABLE", "", "Table to explain; contracts shows all of them"}, options->table);
  AddDataDirectory(command, options->data_dir);
  AddNumbers(command, {"--rowid", "NUMBER", "Explain this row, too: when and why it goes; several times for several"},
             options->rowids);
  AddBounds(command, options->bounds);
  SetHelp(command,
          {{"explain BatteryStatus --data-dir try", "its limits, and what the next run deletes"},
           {"explain BatteryStatus --data-dir try --rowid 17", "when and why that row goes"}},
          "Reads only: it works while collectors write. A row that is not there is named, and the exit code is 1.");
  return [options](bool json) { return ShowExplanation(*options, json); };
}

}  // namespace corvo::telemetry::host
