#include "host/show/explain/lint_text.h"

#include <fmt/core.h>

#include "host/show/fold.h"
#include "host/show/json_text.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string TablesAndDatabases(const CatalogueView& catalogue) {
  return fmt::format("{} in {}", Counted(static_cast<std::int64_t>(catalogue.contracts.size()), "table"),
                     Counted(static_cast<std::int64_t>(catalogue.databases.size()), "database"));
}

std::string Heading(const Finding& finding) {
  const std::string database = finding.database.empty() ? "(no database)" : finding.database;
  return Printable(finding.table.empty() ? database : database + " / " + finding.table);
}

}  // namespace

std::string LintText(const CatalogueView& catalogue, const std::vector<Finding>& findings, std::size_t width,
                     bool colour) {
  if (findings.empty()) {
    return fmt::format("Nothing doubtful: {}\n", TablesAndDatabases(catalogue));
  }
  std::string text;
  for (const Finding& finding : findings) {
    text += fmt::format("{}  {}\n{}\n", InTone(Heading(finding), Tone::kStrong, colour),
                        InTone(finding.rule, Tone::kWarning, colour), Indented(Printable(finding.text), 2, width));
  }
  return text + fmt::format("{} in the contracts ({})\n",
                            Counted(static_cast<std::int64_t>(findings.size()), "finding"),
                            TablesAndDatabases(catalogue));
}

std::string LintDocument(const CatalogueView& catalogue, const std::vector<Finding>& findings) {
  Json document = {{"schema_version", 1},
                   {"kind", "lint"},
                   {"tables", catalogue.contracts.size()},
                   {"databases", catalogue.databases.size()},
                   {"findings", Json::array()}};
  for (const Finding& finding : findings) {
    document["findings"].push_back({{"rule", finding.rule},
                                    {"database", finding.database},
                                    {"table", finding.table.empty() ? Json(nullptr) : Json(finding.table)},
                                    {"text", finding.text}});
  }
  return JsonText(document) + "\n";
}

}  // namespace corvo::telemetry::host
