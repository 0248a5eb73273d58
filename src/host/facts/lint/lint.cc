#include "host/facts/lint/lint.h"

#include <algorithm>
#include <cctype>

#include "host/facts/lint/lint_rules.h"

namespace corvo::telemetry::host {

std::string WithoutCase(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return name;
}

std::uint32_t DatabaseLimit(const std::vector<DatabaseView>& databases, const std::string& name) {
  const auto found = std::find_if(databases.begin(), databases.end(),
                                  [&name](const DatabaseView& each) { return each.database == name; });
  return found == databases.end() ? 0 : found->max_size_mb;
}

std::vector<Finding> Lint(const CatalogueView& catalogue, std::int64_t now) {
  std::vector<Finding> findings = LintTables(catalogue, now);
  const std::vector<Finding> more = LintDatabases(catalogue);
  findings.insert(findings.end(), more.begin(), more.end());
  return findings;
}

}  // namespace corvo::telemetry::host
