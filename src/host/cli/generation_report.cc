#include "host/cli/generation_report.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/text_table.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

Json LiveJson(const LiveResult& live) {
  Json json = {{"seconds", live.seconds}, {"rows", live.rows}, {"waits", live.waits}, {"problems", Json::array()}};
  for (const LiveProblem& problem : live.problems) {
    json["problems"].push_back({{"database", problem.database}, {"reason", problem.reason}});
  }
  return json;
}

void AddWritten(const Generation& generation, const CatalogueView& catalogue, Json& document) {
  document["now"] = TimeText(generation.now);
  document["databases"] = Json::array();
  document["left_out"] = Json::array();
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

}  // namespace

std::string GenerationJson(const Generation& generation, const CatalogueView& catalogue) {
  Json document = {{"schema_version", 1},
                   {"directory", common::Utf8(generation.directory)},
                   {"seed", generation.seed},
                   {"interrupted", generation.signal != 0}};
  if (generation.live) {
    document["live"] = LiveJson(*generation.live);
  }
  if (!generation.databases.empty()) {
    AddWritten(generation, catalogue, document);
  }
  return JsonText(document) + "\n";
}

std::string GenerationText(const Generation& generation, bool colour) {
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
  return FormatTable(lines, alignments, colour) + "\n" + OdditiesText(generation.plan, generation.scale) +
         fmt::format("\nGenerated {} in {}: {}, {} (seed {}, up to {})\n",
                     Counted(static_cast<std::int64_t>(generation.databases.size()), "database"),
                     Printable(common::Utf8(generation.directory)), Counted(rows, "row"), HumanBytes(bytes),
                     generation.seed, TimeText(generation.now));
}

std::string LiveText(const Generation& generation) {
  const LiveResult& live = *generation.live;
  std::string text =
      fmt::format("{}rote {} to the databases in {} in {:.1f} s", generation.signal != 0 ? "Interrupted: w" : "W",
                  Counted(live.rows, "row"), Printable(common::Utf8(generation.directory)), live.seconds);
  if (live.waits > 0) {
    text += fmt::format("; another program's lock was in the way {}", Counted(live.waits, "time"));
  }
  text += "\n";
  for (const LiveProblem& problem : live.problems) {
    text += fmt::format("Nothing more was written to {}: {}\n", problem.database, Printable(problem.reason));
  }
  return text;
}

}  // namespace corvo::telemetry::host
