#include "host/cli/command_line.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "host/cli/commands.h"
#include "host/cli/words/command_words.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/wrong_usage.h"
#include "host/pass/logging.h"
#include "host/platform/platform.h"
#include "host/show/failure.h"
#include "host/show/json_text.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"

namespace corvo::telemetry::host {
namespace {

std::vector<Example> Examples() {
  return {{"generate --data-dir try", "sample databases to try everything on"},
          {"status --data-dir try", "each database and table against its limits"},
          {"plan --data-dir try", "what a run would delete, and nothing deleted"},
          {"run --data-dir try", "clean them"},
          {"verify --data-dir try", "whether what the run promised holds"},
          {"explain BatteryStatus --data-dir try", "why rows of a table go or stay"},
          {"print BatteryStatus --data-dir try", "the newest rows of a table"},
          {"report --data-dir try --html try.html", "all of it as a page for a browser"},
          {"generate --data-dir try --live 60", "new rows for a minute, as collectors write them"}};
}

/// Each command with what runs it, in the order of the help.
std::vector<std::pair<const CLI::App*, Action>> Build(CLI::App& app) {
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("--version", CORVO_VERSION, "Show the version");
  app.add_flag("--json", kJsonText);
  app.add_flag("--no-color", kNoColorText);
  SetHelp(app, Examples(), "COMMAND --help tells all of a command, with examples.");
  app.require_subcommand(0, 1);
  // The same command lines on every platform.
  app.allow_windows_style_options(false);
  std::vector<std::pair<const CLI::App*, Action>> commands;
  for (Action (*add)(CLI::App&) : {AddStatus, AddPlan, AddRun, AddVerify, AddExplain, AddReport, AddHistory, AddPrint,
                                   AddContracts, AddGenerate}) {
    Action action = add(app);
    CLI::App* command = app.get_subcommands({}).back();
    command->add_flag("--json", kJsonText);
    command->add_flag("--no-color", kNoColorText);
    commands.emplace_back(command, std::move(action));
  }
  return commands;
}

// Help and version are exceptions to the parser, but successes to everybody else.
ExitCode Answer(const CLI::App& app, const CLI::ParseError& answer, bool json) {
  std::ostringstream text;
  app.exit(answer, text, text);
  Print(json ? JsonText({{"schema_version", 1}, {"text", text.str()}}) + "\n" : text.str());
  return kDone;
}

ExitCode Fail(const CommandFailure& failure, bool json) {
  ReportFailure(failure.Record(), json, failure.Interrupted());
  return failure.Code();
}

ExitCode ParseAndRun(int argc, char** argv, bool json) {
  CLI::App app("Runs the clean-up of telemetry databases from the command line", "corvo-telemetry-host");
  const auto commands = Build(app);
  try {
    CheckWords(app, {argv + std::min(argc, 1), argv + argc});
    app.parse(argc, argv);
    for (const auto& [command, run] : commands) {
      if (command->parsed()) {
        return run(json);
      }
    }
    WrongUsage("name a command: " + CommandNames(app));
  } catch (const CLI::ParseError& error) {
    return error.get_exit_code() == 0 ? Answer(app, error, json)
                                      : Fail(CommandFailure(kUsage, fmt::format("{}; see --help", error.what())), json);
  } catch (const CommandFailure& failure) {
    return Fail(failure, json);
  } catch (const std::exception& error) {
    ReportFailure(common::Error(error), json);
    return kPassFailed;
  }
}

/// Whether the command line has the flag, before the command or behind it.
bool Holds(std::string_view flag, int argc, char** argv) {
  return std::any_of(argv, argv + argc, [flag](const char* word) { return word == flag; });
}

/// Tells of what got lost on its way, with `errno` for the reason.
int Lost(const char* what, int exit_code) {
  Tell(fmt::format("cannot write {}: {}", what, std::strerror(errno)));
  return exit_code == kDone ? kPassFailed : exit_code;
}

// Output that got lost (a full disk, a closed pipe) must not look like success.
int Finish(int exit_code) {
  if (LogLost()) {
    exit_code = Lost("the log", exit_code);
  }
  return OutputLost() ? Lost("standard output", exit_code) : exit_code;
}

}  // namespace

int RunCommandLine(int argc, char** argv) noexcept {
  try {
    // Known before the command line is understood, so that a wrong one is answered in JSON as well.
    const bool json = Holds("--json", argc, argv);
    if (Holds("--no-color", argc, argv)) {
      NeverUseColour();
    }
    return Finish(ParseAndRun(argc, argv, json));
  } catch (...) {
    return kPassFailed;  // what failed could not even be told
  }
}

}  // namespace corvo::telemetry::host
