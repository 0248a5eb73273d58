#include "host/cli/command_line.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>

#include "host/cli/commands.h"
#include "host/pass/logging.h"
#include "host/show/failure.h"
#include "host/show/json_text.h"
#include "host/show/standard_error.h"

namespace corvo::telemetry::host {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 the pass failed, 2 wrong usage, 10 no data directory, 12 module not loadable.";

struct Options {
  GenerateOptions generate;
  RunOptions run;
  bool contracts_json = false;
};

void AddGenerate(CLI::App& app, GenerateOptions& options) {
  CLI::App& command = *app.add_subcommand("generate", "Write databases that give a pass something to do");
  command.footer(
      "Every table gets rows on both sides of its retention; some tables get more rows than their limit, one database\n"
      "grows past its size limit, one table and one database are left out. The same --seed and --now give the same\n"
      "content.");
  command.add_option("--data-dir", options.data_dir, "Directory to write to; made when it is missing")
      ->required()
      ->type_name("DIR");
  command.add_option("--seed", options.seed, "Seed of all made-up values")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  command.add_option("--scale", options.scale, "Factor on the number of rows of every table")
      ->check(CLI::Range(0.001, 1000.0))
      ->capture_default_str();
  command.add_option("--days", options.days, "Spread all rows over this many days, whatever the retentions")
      ->check(CLI::Range(1, 36'500));
  command.add_option("--now", options.now, "Day (UTC, 2024-05-01) at whose start the rows end; today when not given")
      ->type_name("DAY");
  command.add_flag("--force", options.force, "Replace the databases of the catalogue when there are any");
}

void AddRun(CLI::App& app, RunOptions& options) {
  CLI::App& command = *app.add_subcommand("run", "Clean the databases of a directory and show what changed");
  command.footer(
      std::string("With several passes the counts are those before the first and after the last; a pass that "
                  "fails is the last.\nSizes are those of the files with their write-ahead logs.\n") +
      kExitCodes);
  command.add_option("--data-dir", options.data_dir, "Directory that holds the databases")
      ->required()
      ->type_name("DIR");
  command.add_option("--plugin", options.plugin, "Module to load; the one that belongs to this program when not given")
      ->type_name("FILE");
  command.add_option("--passes", options.passes, "Number of passes, one after the other in this process")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  command.add_flag("--json", options.json, "Write one JSON document to standard output, whatever happens");
  command.add_option("--log-level", options.log_level, "Most talkative records to log")
      ->check(CLI::IsMember(LogLevels()))
      ->default_str(kDefaultLogLevel);
  command.add_option("--log-file", options.log_file, "File to log to instead of standard error")->type_name("FILE");
  command.add_option("--time-limit", options.time_limit_s, "Longest that one statement may run; 0 for any time")
      ->check(CLI::Range(0, 86'400))
      ->type_name("SECONDS")
      ->capture_default_str();
  command.add_option("--memory-limit", options.memory_limit_mb, "Most memory that SQLite may hold; 0 for any amount")
      ->check(CLI::Range(0, 1'000'000))
      ->type_name("MB")
      ->capture_default_str();
  command
      .add_option("--busy-timeout", options.busy_timeout_s, "Longest wait for a lock of another program; 0 for none")
      ->check(CLI::Range(0, 3'600))
      ->type_name("SECONDS")
      ->capture_default_str();
}

void AddContracts(CLI::App& app, bool& json) {
  CLI::App& command =
      *app.add_subcommand("contracts", "Show which tables are kept where, for how long, and how many rows");
  command.add_flag("--json", json, "Write one JSON document to standard output, whatever happens");
}

void Build(CLI::App& app, Options& options) {
  app.set_version_flag("--version", CORVO_VERSION);
  app.footer(kExitCodes);
  app.require_subcommand(1);
  // The same command lines on every platform.
  app.allow_windows_style_options(false);
  AddGenerate(app, options.generate);
  AddRun(app, options.run);
  AddContracts(app, options.contracts_json);
}

ExitCode Dispatch(const CLI::App& app, const Options& options) {
  if (app.got_subcommand("generate")) {
    return GenerateCommand(options.generate);
  }
  if (app.got_subcommand("run")) {
    return RunCommand(options.run);
  }
  return ContractsCommand(options.contracts_json);
}

// Help and version are exceptions to the parser, but successes to everybody else.
ExitCode Answer(const CLI::App& app, const CLI::ParseError& answer, bool json) {
  std::ostringstream text;
  app.exit(answer, text, text);
  fmt::print("{}", json ? JsonText({{"schema_version", 1}, {"text", text.str()}}) + "\n" : text.str());
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
    app.parse(argc, argv);
    return Dispatch(app, options);
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
int FlushOutput(int exit_code) {
  if (std::fflush(stdout) == 0) {
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
    return FlushOutput(ParseAndRun(argc, argv, json));
  } catch (...) {
    return kPassFailed;  // what failed could not even be told
  }
}

}  // namespace corvo::telemetry::host
