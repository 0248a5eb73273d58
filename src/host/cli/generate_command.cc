#include <fmt/core.h>

#include <exception>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/generation_report.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/data_directory.h"
#include "host/platform/instance_lock.h"
#include "host/platform/interruption.h"
#include "host/platform/platform.h"
#include "host/samples/generation_plan.h"
#include "host/samples/live_writing.h"
#include "host/samples/sample_files.h"
#include "host/show/standard_output.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

// Absolute, so that a name that looks like a URI is none to SQLite.
fs::path AbsoluteDirectory(const std::string& name) {
  std::error_code error;
  fs::path directory = fs::absolute(name, error);
  if (error) {
    throw CommandFailure(kUsage, fmt::format("cannot find {}: there is no current directory; name the directory from "
                                             "the root on",
                                             name));
  }
  return directory;
}

Generation Generate(const GenerateOptions& options, const fs::path& directory, const CatalogueView& catalogue) {
  const std::int64_t now = options.now.empty() ? StartOfToday() : ParseDay(options.now);
  Generation generation{.directory = directory,
                        .now = now,
                        .seed = options.seed,
                        .scale = options.scale,
                        .plan = PlanGeneration(catalogue, options.scale, options.days)};
  generation.databases =
      WriteSamples(generation.plan, catalogue, {generation.directory, now, options.seed, options.force});
  return generation;
}

Generation GenerateOrExplain(const GenerateOptions& options, const fs::path& directory,
                             const CatalogueView& catalogue) {
  try {
    return Generate(options, directory, catalogue);
  } catch (const CommandFailure&) {
    throw;
  } catch (const std::exception& error) {
    throw CommandFailure(
        kPassFailed, fmt::format("cannot generate: {}; what {} held before is kept", error.what(), options.data_dir));
  }
}

/// Nothing to generate: what is there is to get more rows.
Generation ExistingDatabases(const GenerateOptions& options, const fs::path& directory) {
  if (const std::string problem = ResolveDataDirectory(directory.string()).problem; !problem.empty()) {
    throw CommandFailure(kUsage, problem);
  }
  return {.directory = directory, .now = StartOfToday(), .seed = options.seed, .scale = options.scale};
}

ExitCode WriteOn(const GenerateOptions& options, const CatalogueView& catalogue, Generation& generation) {
  generation.live = WriteLive(catalogue, {.directory = generation.directory,
                                          .seconds = options.live_s,
                                          .rate = options.rate,
                                          .seed = options.seed,
                                          .show_progress = IsTerminal(stderr)});
  generation.signal = InterruptionScope::Signal();
  if (!options.json) {
    Print(LiveText(generation));
  }
  if (generation.signal != 0) {
    return InterruptedBy(generation.signal);
  }
  return generation.live->problems.empty() ? kDone : kPassFailed;
}

/// A run that is at work must not find other files under the names of those that it has looked at. Where there can be
/// no lock, nothing can be replaced either.
std::optional<InstanceLock> KeepRunsAway(const GenerateOptions& options, const fs::path& directory) {
  std::error_code error;
  if (!options.force || !fs::is_directory(directory, error)) {
    return std::nullopt;
  }
  std::string holder;
  try {
    if (auto lock = InstanceLock::TryTake(directory, holder)) {
      return lock;
    }
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
  throw CommandFailure(
      kAnotherRun, fmt::format("nothing was generated: a run is at work in {}: {}", common::Utf8(directory), holder));
}

void AddWhatToGenerate(CLI::App& command, GenerateOptions& options) {
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
}

void AddLiveWriting(CLI::App& command, GenerateOptions& options) {
  CLI::Option& live = AddNumber(command,
                                {"--live", "SECONDS",
                                 "Then keep adding new rows for so long, as collectors do; to what is there, if there "
                                 "is something and --force is not given"},
                                options.live_s, 1, 604'800);
  AddNumber(command, {"--rate", "ROWS", "Rows that --live adds in a second, over all tables"}, options.rate, 1, 100'000)
      .needs(&live);
}

constexpr const char* kFooter =
    "Every table gets rows on both sides of its retention; some tables get more rows than their limit, one database "
    "grows past its size limit, one table and one database are left out. The same --seed and --now give the same "
    "content. What a generation that fails has begun is removed, and what it was to replace stays.";

}  // namespace

Action AddGenerate(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("generate", "Write databases that give a pass something to do");
  SetHelp(command,
          {{"generate --data-dir try", "sample databases to try everything on"},
           {"generate --data-dir try --force --scale 0.1", "fewer rows, in place of those that are there"},
           {"generate --data-dir try --live 60", "new rows for a minute, to try the other commands meanwhile"}},
          kFooter);
  const auto options = std::make_shared<GenerateOptions>();
  AddWhatToGenerate(command, *options);
  AddLiveWriting(command, *options);
  return [options](bool json) {
    options->json = json;
    return GenerateCommand(*options);
  };
}

ExitCode GenerateCommand(const GenerateOptions& options) {
  const CatalogueView catalogue = ReadCatalogue();
  const InterruptionScope interruptions([](int /*signal*/) {});
  const fs::path directory = AbsoluteDirectory(options.data_dir);
  const bool add_only = options.live_s > 0 && !options.force && HoldsDatabases(directory, catalogue);
  std::optional<InstanceLock> lock = KeepRunsAway(options, directory);
  Generation generation =
      add_only ? ExistingDatabases(options, directory) : GenerateOrExplain(options, directory, catalogue);
  lock.reset();
  if (!options.json && !add_only) {
    Print(GenerationText(generation, UsesColour(stdout)));
  }
  const ExitCode code = options.live_s > 0 ? WriteOn(options, catalogue, generation) : kDone;
  if (options.json) {
    Print(GenerationJson(generation, catalogue));
  }
  return code;
}

}  // namespace corvo::telemetry::host
