#include <fmt/core.h>
#include <fmt/format.h>

#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/facts/catalogue_view.h"
#include "host/platform/interruption.h"
#include "host/platform/platform.h"
#include "host/samples/generation_plan.h"
#include "host/samples/sample_files.h"
#include "host/samples/time_text.h"
#include "host/show/json_text.h"
#include "host/show/standard_output.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

struct Generation {
  fs::path directory;
  std::int64_t now;
  GenerationPlan plan;
  std::vector<WrittenDatabase> databases;
};

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

Generation Generate(const GenerateOptions& options, const CatalogueView& catalogue) {
  const std::int64_t now = options.now.empty() ? StartOfToday() : ParseDay(options.now);
  Generation generation{.directory = AbsoluteDirectory(options.data_dir),
                        .now = now,
                        .plan = PlanGeneration(catalogue, options.scale, options.days),
                        .databases = {}};
  generation.databases =
      WriteSamples(generation.plan, catalogue, {generation.directory, now, options.seed, options.force});
  return generation;
}

Generation GenerateOrExplain(const GenerateOptions& options, const CatalogueView& catalogue) {
  try {
    return Generate(options, catalogue);
  } catch (const CommandFailure&) {
    throw;
  } catch (const std::exception& error) {
    throw CommandFailure(
        kPassFailed, fmt::format("cannot generate: {}; what {} held before is kept", error.what(), options.data_dir));
  }
}

std::string GenerationJson(const Generation& generation, const CatalogueView& catalogue, std::uint64_t seed) {
  Json document = {{"schema_version", 1},
                   {"directory", common::Utf8(generation.directory)},
                   {"seed", seed},
                   {"now", TimeText(generation.now)},
                   {"databases", Json::array()},
                   {"left_out", Json::array()}};
  for (const WrittenDatabase& database : generation.databases) {
    document["databases"].push_back({{"name", database.name},
                                     {"path", common::Utf8(database.path)},
                                     {"tables", database.tables},
                                     {"rows", database.rows},
                                     {"bytes", database.bytes}});
  }
  for (const ContractView& contract : catalogue.contracts) {
    if (contract.database == generation.plan.missing_database || contract.table == generation.plan.missing_table) {
      document["left_out"].push_back({{"database", contract.database}, {"table", contract.table}});
    }
  }
  return JsonText(document) + "\n";
}

std::string OdditiesText(const GenerationPlan& plan, double scale) {
  std::string text = "Put in on purpose:\n";
  text += fmt::format("  no database   {}\n", plan.missing_database);
  text += fmt::format("  no table      {}\n", plan.missing_table);
  if (scale >= 1) {
    text += fmt::format("  too large     {}\n", plan.oversize_database);
  }
  if (!plan.long_tables.empty()) {
    text += fmt::format("  too many rows {}\n", fmt::join(plan.long_tables, ", "));
  }
  return text;
}

std::string GenerationText(const Generation& generation, const GenerateOptions& options, bool colour) {
  std::vector<TableLine> lines = {{{"DATABASE", "TABLES", "ROWS", "FILE SIZE"}, Tone::kStrong}};
  std::int64_t rows = 0;
  std::int64_t bytes = 0;
  for (const WrittenDatabase& database : generation.databases) {
    lines.push_back(
        {{database.name, std::to_string(database.tables), WithSeparators(database.rows), HumanBytes(database.bytes)}});
    rows += database.rows;
    bytes += database.bytes;
  }
  const std::vector<Align> alignments = {Align::kLeft, Align::kRight, Align::kRight, Align::kRight};
  return FormatTable(lines, alignments, colour) + "\n" + OdditiesText(generation.plan, options.scale) +
         fmt::format("\nGenerated {} in {}: {}, {} (seed {}, up to {})\n",
                     Counted(static_cast<std::int64_t>(generation.databases.size()), "database"),
                     Printable(common::Utf8(generation.directory)), Counted(rows, "row"), HumanBytes(bytes),
                     options.seed, TimeText(generation.now));
}

}  // namespace

ExitCode GenerateCommand(const GenerateOptions& options) {
  const CatalogueView catalogue = ReadCatalogue();
  const InterruptionScope interruptions([](int /*signal*/) {});
  const Generation generation = GenerateOrExplain(options, catalogue);
  Print(options.json ? GenerationJson(generation, catalogue, options.seed)
                     : GenerationText(generation, options, UsesColour(stdout)));
  return kDone;
}

}  // namespace corvo::telemetry::host
