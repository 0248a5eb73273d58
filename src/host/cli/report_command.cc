#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <vector>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/output_place.h"
#include "host/cli/page_file.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/pass/loaded_module.h"
#include "host/pass/logging.h"
#include "host/pass/plan.h"
#include "host/platform/platform.h"
#include "host/show/json_text.h"
#include "host/show/report/report_page.h"
#include "host/show/standard_output.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using Subject = ReportFacts::Subject;

struct ReportOptions {
  std::string data_dir;
  std::string html;
  std::string of = "status";
  std::string plugin;                  ///< of a plan; empty: the module that belongs to the program
  std::vector<std::string> databases;  ///< the only ones to tell of, as the catalogue spells them; empty: all
  Bounds bounds;
};

Subject SubjectOf(const std::string& of) {
  if (of == "plan") {
    return Subject::kPlan;
  }
  return of == "run" ? Subject::kRun : Subject::kStatus;
}

RunReport PlanFor(const ReportOptions& options, const DataDirectory& directory) {
  const LogScope log("", "");
  LoadedModule module(options.plugin.empty() ? DefaultModulePath() : fs::path(options.plugin));
  const shared::StorageOptionsScope storage(StorageOptionsOf(options.bounds, directory.path));
  return Plan(module.Module(), {.directory = directory.path,
                                .source = directory.origin,
                                .only = options.databases,
                                .show_progress = IsTerminal(stderr)});
}

void ReadPast(const fs::path& directory, ReportFacts& facts) {
  try {
    facts.history = ReadHistory(directory);
  } catch (const std::runtime_error& failure) {
    facts.history_problem = failure.what();
  }
}

/// A run may have cleaned more than the page is about.
RunRecord LastRun(const ReportFacts& facts, const std::vector<std::string>& only) {
  if (facts.history.empty()) {
    throw CommandFailure(kPassFailed, facts.history_problem.empty()
                                          ? "no run of this directory is recorded yet; --of status tells how it stands"
                                          : facts.history_problem);
  }
  RunRecord run = facts.history.back();
  std::erase_if(run.databases, [&only](const DatabaseRecord& database) {
    return !only.empty() && std::find(only.begin(), only.end(), database.name) == only.end();
  });
  return run;
}

ReportFacts ReadFacts(const ReportOptions& options, const DataDirectory& directory) {
  const std::int64_t now = std::time(nullptr);
  ReportFacts facts{.subject = SubjectOf(options.of), .state = {}, .ages = {}, .pass = {}, .history = {}};
  ReadPast(directory.path, facts);
  if (facts.subject == Subject::kRun) {
    facts.pass = LastRun(facts, options.databases);
  } else if (facts.subject == Subject::kPlan) {
    facts.pass = RecordOf(PlanFor(options, directory));
  }
  const shared::StorageOptionsScope storage(ReadOnlyOptionsOf(options.bounds, directory.path));
  facts.state = ReadDirectoryState(directory.path, directory.origin, options.databases, now);
  for (const DatabaseState& database : facts.state.databases) {
    facts.ages.push_back(ReadRowAges(database, now));
  }
  if (facts.subject == Subject::kStatus) {
    facts.pass = ForecastOf(facts.state);
  }
  return facts;
}

/// What the page could not tell.
std::vector<std::string> Gaps(const ReportFacts& facts) {
  std::vector<std::string> gaps;
  for (const DatabaseState& database : facts.state.databases) {
    if (database.problem) {
      gaps.push_back(fmt::format("{} cannot be read: {}", database.name, Printable(database.problem->reason)));
    }
    for (const TableState& table : database.tables) {
      if (table.unread) {
        gaps.push_back(fmt::format("{}: {} cannot be read in full: {}", database.name, table.contract.table,
                                   Printable(table.problem)));
      }
    }
  }
  return gaps;
}

std::string Document(const ReportOptions& options, const fs::path& place, std::size_t bytes,
                     const std::vector<std::string>& gaps) {
  return JsonText({{"schema_version", 1},
                   {"kind", "report"},
                   {"of", options.of},
                   {"path", common::Utf8(place)},
                   {"bytes", bytes},
                   {"gaps", gaps}}) +
         "\n";
}

std::string Text(const ReportOptions& options, const fs::path& place, std::size_t bytes,
                 const std::vector<std::string>& gaps) {
  std::string text = fmt::format("Wrote a page on the {}, {}: {}\n", options.of,
                                 HumanBytes(static_cast<std::int64_t>(bytes)), Printable(common::Utf8(place)));
  for (const std::string& gap : gaps) {
    text += gap + "\n";
  }
  return text;
}

ExitCode Report(const ReportOptions& options, bool json) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const fs::path place = RequirePagePlace(options.html, directory.path);
  const Interruptions interruptions;
  const ReportFacts facts = ReadFacts(options, directory);
  RequireNoInterruption();
  const std::string page = ReportPage(facts);
  WritePage(place, page);
  const std::vector<std::string> gaps = Gaps(facts);
  Print(json ? Document(options, place, page.size(), gaps) : Text(options, place, page.size(), gaps));
  return gaps.empty() ? kDone : kPassFailed;
}

}  // namespace

Action AddReport(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("report", "Write one page, for a browser, on how everything stands");
  const auto options = std::make_shared<ReportOptions>();
  AddText(command, {"--html", "FILE", "The page to write, in place of a former one"}, options->html).required();
  AddChoice(command, {"--of", "SUBJECT", "What comes first: status, plan (what a run would do) or run (the last one)"},
            options->of, {"status", "plan", "run"});
  AddDataDirectory(command, options->data_dir);
  AddDatabases(command, {"--database", "NAME", "Tell of this database alone; several times for several"},
               options->databases);
  AddText(command, {"--plugin", "FILE", "Module for a plan; the one that belongs to this program when not given"},
          options->plugin);
  AddBounds(command, options->bounds);
  SetHelp(command,
          {{"report --data-dir try --html try.html", "how everything stands"},
           {"report --data-dir try --html try.html --of plan", "what a run would do, shown on copies"},
           {"report --data-dir try --html try.html --of run", "what the last run did"}},
          "The page is one file that needs no network. Reads only, and replaces FILE as a whole or not at all.");
  return [options](bool json) { return Report(*options, json); };
}

}  // namespace corvo::telemetry::host
