#include <fmt/core.h>

#include <ctime>
#include <functional>
#include <memory>
#include <vector>

#include "host/cli/commands.h"
#include "host/cli/words/help_text.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/lint/lint.h"
#include "host/platform/platform.h"
#include "host/show/explain/lint_text.h"
#include "host/show/fitting_table.h"
#include "host/show/fold.h"
#include "host/show/json_text.h"
#include "host/show/standard_output.h"
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

FittingColumn Column(const char* head, Align align, int rank, const CatalogueView& catalogue,
                     const std::function<std::string(const ContractView&)>& text) {
  FittingColumn column{.head = head, .align = align, .rank = rank};
  for (const ContractView& contract : catalogue.contracts) {
    column.texts.push_back(text(contract));
  }
  return column;
}

std::string CatalogueText(const CatalogueView& catalogue, const Display& display) {
  const auto add = [&catalogue](const char* head, Align align, int rank, const auto& text) {
    return Column(head, align, rank, catalogue, text);
  };
  constexpr int kNeededLeast = 4;  // hardly another name than the table's
  const std::string table = FormatFitting(
      {add("DATABASE", Align::kLeft, 3, [](const ContractView& each) { return each.database; }),
       add("CONTRACT", Align::kLeft, kNeededLeast, [](const ContractView& each) { return each.name; }),
       add("TABLE", Align::kLeft, 0, [](const ContractView& each) { return each.table; }),
       add("MAX ROWS", Align::kRight, 0, [](const ContractView& each) { return Limit(each.max_rows); }),
       add("MAX DAYS", Align::kRight, 1, [](const ContractView& each) { return Limit(each.retention_days); }),
       add("MAX MB", Align::kRight, 2, [](const ContractView& each) { return Limit(each.max_size_mb); })},
      std::vector<Tone>(catalogue.contracts.size(), Tone::kPlain), display);
  const std::string note = fmt::format(
      "{} in {}. Rows are kept for MAX DAYS and up to MAX ROWS a table; MAX MB bounds the whole file of the database.",
      Counted(static_cast<std::int64_t>(catalogue.contracts.size()), "table"),
      Counted(static_cast<std::int64_t>(catalogue.databases.size()), "database"));
  return table + "\n" + Indented(note, 0, OutputWidth());
}

ExitCode Show(bool json) {
  const CatalogueView catalogue = ReadCatalogue();
  constexpr std::size_t kUnbounded = 1000;
  const Display display{.width = IsTerminal(stdout) ? OutputWidth() : kUnbounded, .colour = UsesColour(stdout)};
  Print(json ? CatalogueJson(catalogue) : CatalogueText(catalogue, display));
  return kDone;
}

ExitCode ShowDoubts(bool json) {
  const CatalogueView catalogue = ReadCatalogue();
  const std::vector<Finding> findings = Lint(catalogue, std::time(nullptr));
  Print(json ? LintDocument(catalogue, findings) : LintText(catalogue, findings, OutputWidth(), UsesColour(stdout)));
  return findings.empty() ? kDone : kFindings;
}

}  // namespace

Action AddContracts(CLI::App& app) {
  CLI::App& command =
      *app.add_subcommand("contracts", "Show which tables are kept where, for how long, and how many rows");
  const auto lint = std::make_shared<bool>(false);
  command.add_flag("--lint", *lint, "Show what is doubtful in them instead, and end with code 3 when something is");
  SetHelp(command,
          {{"contracts", "every table with its limits"},
           {"contracts --json", "the same, for programs"},
           {"contracts --lint", "for scripts: exit code 3 when a limit cannot work as it looks"}},
          "The tables and limits are built into the program.");
  return [lint](bool json) { return *lint ? ShowDoubts(json) : Show(json); };
}

}  // namespace corvo::telemetry::host
