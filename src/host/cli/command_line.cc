#include "host/cli/command_line.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string_view>

#include "host/cli/command_words.h"
#include "host/cli/commands.h"
#include "host/cli/option_values.h"
#include "host/cli/wrong_usage.h"
#include "host/pass/logging.h"
#include "host/show/failure.h"
#include "host/show/json_text.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"

namespace corvo::telemetry::host {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 all cleaned, or nothing to do; 1 something was not cleaned; 2 wrong usage; 3 kept for findings;\n"
    "10 no data directory, or none that can be used; 11 another run is at work there; 12 module not loadable;\n"
    "130 / 143 interrupted.";

constexpr const char* kJsonText = "Write one JSON document to standard output, whatever happens";

struct Options {
  GenerateOptions generate;
  RunOptions run;
};

void AddGenerate(CLI::App& app, GenerateOptions& options) {
  CLI::App& command = *app.add_subcommand("generate", "Write databases that give a pass something to do");
  command.footer(
      "Every table gets rows on both sides of its retention; some tables get more rows than their limit, one database\n"
      "grows past its size limit, one table and one database are left out. The same --seed and --now give the same\n"
      "content. What a generation that fails has begun is removed, and what it was to replace stays.");
  AddText(command, {"--data-dir", "DIR", "Directory to write to; made when it is missing"}, options.data_dir)
      .required();
  AddNumber(command, {"--seed", "NUMBER", "Seed of all made-up values"}, options.seed, std::uint64_t{0},
            std::numeric_limits<std::uint64_t>::max());
  AddNumber(command, {"--scale", "FACTOR", "Factor on the number of rows of every table"}, options.scale, 0.001,
            1000.0);
  AddNumber(command, {"--days", "DAYS", "Spread all rows over this many days, whatever the retentions"}, options.days,
            std::uint32_t{1}, std::uint32_t{36'500});
  AddText(command, {"--now", "DAY", "Day (UTC, 2024-05-01) at whose start the rows end; today when not given"},
          options.now);
  command.add_flag("--force", options.force, "Replace the databases of the catalogue when there are any");
  command.add_flag("--json", options.json, kJsonText);
}

void AddWhatToClean(CLI::App& command, RunOptions& options) {
  AddText(command,
          {"--data-dir", "DIR",
           "Directory that holds the databases; CORVO_TELEMETRY_DATA_DIR, else the platform's, when not given"},
          options.data_dir);
  AddDatabases(command, {"--database", "NAME", "Clean this database alone; several times for several"},
               options.databases);
  AddText(command, {"--plugin", "FILE", "Module to load; the one that belongs to this program when not given"},
          options.plugin);
  AddNumber(command, {"--passes", "NUMBER", "Number of passes, one after the other in this process"}, options.passes, 1,
            1'000'000);
  command.add_flag("--keep-going", options.keep_going,
                   "Give each database a pass of its own, so that one failure does not stop those after it");
  command.add_flag("--trust-directory", options.trust_directory,
                   "Clean as a privileged user where others may write, too");
}

void AddWhatToTell(CLI::App& command, RunOptions& options) {
  command.add_flag("--json", options.json, kJsonText);
  command.add_flag("--quiet", options.quiet, "Tell of nothing but failures, on standard error");
  AddChoice(command,
            {"--log-level", "LEVEL", fmt::format("Most talkative records to log: {}", fmt::join(LogLevels(), ", "))},
            options.log_level, LogLevels());
  AddText(command, {"--log-file", "FILE", "File to log to instead of standard error"}, options.log_file);
}

void AddBounds(CLI::App& command, RunOptions& options) {
  AddNumber(command, {"--wait", "SECONDS", "Longest wait for the end of another run of the same directory"},
            options.wait_s, 0, 86'400);
  AddNumber(command, {"--time-limit", "SECONDS", "Longest that one statement may run; 0 for any time"},
            options.time_limit_s, 0, 86'400);
  AddNumber(command, {"--memory-limit", "MB", "Most memory that SQLite may hold; 0 for any amount"},
            options.memory_limit_mb, 0, 1'000'000);
  AddNumber(command, {"--busy-timeout", "SECONDS", "Longest wait for a lock of another program; 0 for none"},
            options.busy_timeout_s, 0, 3'600);
}

void AddRun(CLI::App& app, RunOptions& options) {
  CLI::App& command = *app.add_subcommand("run", "Clean the databases of a directory and show what changed");
  command.footer(fmt::format(
      "With several passes the counts are those before the first and after the last; a pass that fails is the "
      "last.\nSizes are those of the files with their write-ahead logs. The log level is {} when none is "
      "given: errors without\nthe missing tables that every pass forgives; for a file it is {}.\n{}",
      kDefaultLogLevel, kDefaultLogFileLevel, kExitCodes));
  AddWhatToClean(command, options);
  AddWhatToTell(command, options);
  AddBounds(command, options);
}

void AddContracts(CLI::App& app) {
  CLI::App& command =
      *app.add_subcommand("contracts", "Show which tables are kept where, for how long, and how many rows");
  command.add_flag("--json", kJsonText);
}

void Build(CLI::App& app, Options& options) {
  app.set_version_flag("--version", CORVO_VERSION);
  app.add_flag("--json", kJsonText);
  app.footer(kExitCodes);
  app.require_subcommand(0, 1);
  // The same command lines on every platform.
  app.allow_windows_style_options(false);
  AddGenerate(app, options.generate);
  AddRun(app, options.run);
  AddContracts(app);
}

ExitCode Dispatch(const CLI::App& app, Options& options, bool json) {
  // Before the command as well as behind it.
  options.generate.json = options.run.json = json;
  if (app.got_subcommand("generate")) {
    return GenerateCommand(options.generate);
  }
  if (app.got_subcommand("run")) {
    return RunCommand(options.run);
  }
  if (app.got_subcommand("contracts")) {
    return ContractsCommand(json);
  }
  WrongUsage("name a command: " + CommandNames(app));
}

// Help and version are exceptions to the parser, but successes to everybody else.
ExitCode Answer(const CLI::App& app, const CLI::ParseError& answer, bool json) {
  std::ostringstream text;
  app.exit(answer, text, text);
  Print(json ? JsonText({{"schema_version", 1}, {"text", text.str()}}) + "\n" : text.str());
  return kDone;
}

ExitCode Fail(const CommandFailure& failure, bool json) {
  ReportFailure(failure.Record(), json);
  return failure.Code();
}

ExitCode ParseAndRun(int argc, char** argv, bool json) {
  CLI::App app("Runs the clean-up of telemetry databases from the command line.", "corvo-telemetry-host");
  Options options;
  Build(app, options);
  try {
    CheckWords(app, {argv + std::min(argc, 1), argv + argc});
    app.parse(argc, argv);
    return Dispatch(app, options, json);
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

// Output that got lost (a full disk, a closed pipe) must not look like success.
int Finish(int exit_code) {
  if (!OutputLost()) {
    return exit_code;
  }
  Tell(fmt::format("cannot write standard output: {}", std::strerror(errno)));
  return exit_code == kDone ? kPassFailed : exit_code;
}

}  // namespace

int RunCommandLine(int argc, char** argv) noexcept {
  try {
    // Known before the command line is understood, so that a wrong one is answered in JSON as well.
    const bool json =
        std::any_of(argv, argv + argc, [](const char* word) { return std::string_view(word) == "--json"; });
    return Finish(ParseAndRun(argc, argv, json));
  } catch (...) {
    return kPassFailed;  // what failed could not even be told
  }
}

}  // namespace corvo::telemetry::host
