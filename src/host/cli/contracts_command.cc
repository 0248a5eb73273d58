#include <fmt/core.h>

#include <ctime>
#include <memory>
#include <vector>

#include "host/cli/commands.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/lint/lint.h"
#include "host/platform/platform.h"
#include "host/show/explain/lint_text.h"
#include "host/show/json_text.h"
#include "host/show/standard_output.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string CatalogueJson(const CatalogueView& catalogue) {
  Json document = {{"schema_version", 1}, {"contracts", Json::array()}, {"databases", Json::array()}};
  for (const ContractView& contract : catalogue.contracts) {
    document["contracts"].push_back({{"type", contract.type},
                                     {"name", contract.name},
                                     {"table", contract.table},
                                     {"database", contract.database},
                                     {"max_rows", contract.max_rows},
                                     {"retention_days", contract.retention_days},
                                     {"max_size_mb", contract.max_size_mb}});
  }
  for (const DatabaseView& database : catalogue.databases) {
    document["databases"].push_back({{"type", database.type},
                                     {"name", database.name},
                                     {"database", database.database},
                                     {"max_size_mb", database.max_size_mb}});
  }
  return JsonText(document) + "\n";
}

std::string Limit(std::uint32_t value) { return value == 0 ? "none" : WithSeparators(value); }

std::string CatalogueText(const CatalogueView& catalogue, bool colour) {
  std::vector<TableLine> lines = {
      {{"DATABASE", "CONTRACT", "TABLE", "MAX ROWS", "MAX DAYS", "DATABASE MAX MB"}, Tone::kStrong}};
  for (const ContractView& contract : catalogue.contracts) {
    lines.push_back({{contract.database, contract.name, contract.table, Limit(contract.max_rows),
                      Limit(contract.retention_days), Limit(contract.max_size_mb)}});
  }
  const std::vector<Align> alignments = {Align::kLeft,  Align::kLeft,  Align::kLeft,
                                         Align::kRight, Align::kRight, Align::kRight};
  return FormatTable(lines, alignments, colour) +
         fmt::format(
             "\n{} in {}. Rows are kept for MAX DAYS and up to MAX ROWS a table; DATABASE MAX MB bounds the whole "
             "file.\n",
             Counted(static_cast<std::int64_t>(catalogue.contracts.size()), "table"),
             Counted(static_cast<std::int64_t>(catalogue.databases.size()), "database"));
}

ExitCode Show(bool json) {
  const CatalogueView catalogue = ReadCatalogue();
  Print(json ? CatalogueJson(catalogue) : CatalogueText(catalogue, UsesColour(stdout)));
  return kDone;
}

ExitCode ShowDoubts(bool json) {
  const CatalogueView catalogue = ReadCatalogue();
  const std::vector<Finding> findings = Lint(catalogue, std::time(nullptr));
  Print(json ? LintDocument(catalogue, findings)
             : LintText(catalogue, findings, static_cast<std::size_t>(TerminalWidth(stdout)), UsesColour(stdout)));
  return findings.empty() ? kDone : kFindings;
}

}  // namespace

Action AddContracts(CLI::App& app) {
  CLI::App& command =
      *app.add_subcommand("contracts", "Show which tables are kept where, for how long, and how many rows");
  const auto lint = std::make_shared<bool>(false);
  command.add_flag("--lint", *lint, "Show what is doubtful in them instead, and end with code 3 when something is");
  return [lint](bool json) { return *lint ? ShowDoubts(json) : Show(json); };
}

}  // namespace corvo::telemetry::host
