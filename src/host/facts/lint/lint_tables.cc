#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/explain/limits.h"
#include "host/facts/growth.h"
#include "host/facts/lint/lint_rules.h"
#include "host/facts/lint/sql_names.h"

namespace corvo::telemetry::host {
namespace {

bool SameName(const std::string& one, const std::string& other) { return WithoutCase(one) == WithoutCase(other); }

// The rules for a table: what is wrong with it; empty when nothing.

std::string RetentionWraps(const ContractView& contract, const CatalogueView& /*catalogue*/, std::int64_t /*now*/) {
  const std::int64_t meant = std::int64_t{contract.retention_days} * common::kSecondsPerDay;
  const std::int64_t kept = KeptSeconds(contract.retention_days);
  return kept == meant ? ""
                       : fmt::format(
                             "retention_days {} is beyond 49710, where the seconds no longer fit 32 bits: rows "
                             "are kept for {} seconds ({:.1f} days)",
                             contract.retention_days, kept, static_cast<double>(kept) / common::kSecondsPerDay);
}

std::string RetentionBefore1970(const ContractView& contract, const CatalogueView& /*catalogue*/, std::int64_t now) {
  return contracts::Cutoff(now, contract.retention_days) >= 0
             ? ""
             : fmt::format("retention_days {} reaches back before 1970: no row ever expires", contract.retention_days);
}

std::string TinyRowLimit(const ContractView& contract, const CatalogueView& /*catalogue*/, std::int64_t /*now*/) {
  constexpr std::uint32_t kLargestTiny = 9;
  if (contract.max_rows == 0 || contract.max_rows > kLargestTiny) {
    return "";
  }
  const std::int64_t left = RowsKept(contract.max_rows);
  return fmt::format("max_rows {} {}", contract.max_rows,
                     left == 0 ? "empties the table in every pass"
                               : fmt::format("leaves no more than {} row{}", left, left == 1 ? "" : "s"));
}

std::string NoLimit(const ContractView& contract, const CatalogueView& catalogue, std::int64_t now) {
  const bool by_age = contract.retention_days != 0 && contracts::Cutoff(now, contract.retention_days) >= 0;
  const bool by_size = contract.max_size_mb != 0 && DatabaseLimit(catalogue.databases, contract.database) != 0;
  return by_age || by_size || LimitsRows(contract.max_rows)
             ? ""
             : "nothing limits it, neither its age nor its rows nor its database's size: it grows for ever";
}

std::string SameTable(const ContractView& contract, const CatalogueView& catalogue, std::int64_t /*now*/) {
  const auto other =
      std::find_if(catalogue.contracts.begin(), catalogue.contracts.end(), [&contract](const ContractView& each) {
        return SameName(each.database, contract.database) && SameName(each.table, contract.table);
      });
  return &*other == &contract ? ""
                              : fmt::format("{} and {} are the same table: it is cleaned by the limits of both",
                                            other->type, contract.type);
}

std::string QuotedName(const ContractView& contract, const CatalogueView& /*catalogue*/, std::int64_t /*now*/) {
  return NeedsQuotes(contract.table)
             ? "its name goes into SQL unquoted, and SQL would need quotes for it: letters, digits and underscores "
               "only, and no keyword"
             : "";
}

struct TableRule {
  const char* name;
  std::string (*judge)(const ContractView& contract, const CatalogueView& catalogue, std::int64_t now);
};

constexpr std::array kTableRules = {
    TableRule{"retention_wraps", &RetentionWraps}, TableRule{"retention_before_1970", &RetentionBefore1970},
    TableRule{"row_limit_tiny", &TinyRowLimit},    TableRule{"no_limit", &NoLimit},
    TableRule{"same_table", &SameTable},           TableRule{"name_needs_quotes", &QuotedName},
};

}  // namespace

std::vector<Finding> LintTables(const CatalogueView& catalogue, std::int64_t now) {
  std::vector<Finding> findings;
  for (const ContractView& contract : catalogue.contracts) {
    for (const TableRule& rule : kTableRules) {
      if (const std::string text = rule.judge(contract, catalogue, now); !text.empty()) {
        findings.push_back({rule.name, contract.database, contract.table, text});
      }
    }
  }
  return findings;
}

}  // namespace corvo::telemetry::host
