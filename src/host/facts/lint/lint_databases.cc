#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "host/facts/explain/limits.h"
#include "host/facts/lint/lint_rules.h"

namespace corvo::telemetry::host {
namespace {

/// Everything that names one database, whatever the letter case.
struct Family {
  std::string key;  ///< the name in lower case, as a pass groups by it
  std::vector<ContractView> contracts;
  std::vector<DatabaseView> databases;
};

std::map<std::string, Family> Families(const CatalogueView& catalogue) {
  std::map<std::string, Family> families;
  for (const ContractView& contract : catalogue.contracts) {
    families[WithoutCase(contract.database)].contracts.push_back(contract);
  }
  for (const DatabaseView& database : catalogue.databases) {
    families[WithoutCase(database.database)].databases.push_back(database);
  }
  for (auto& [key, family] : families) {
    family.key = key;
  }
  return families;
}

// The rules for a database.

std::string DifferInCase(const Family& family) {
  std::set<std::string> names;
  for (const ContractView& contract : family.contracts) {
    names.insert(contract.database);
  }
  for (const DatabaseView& database : family.databases) {
    names.insert(database.database);
  }
  return names.size() <= 1 ? ""
                           : fmt::format(
                                 "{} differ only in letter case: one database to a pass, several files where "
                                 "names of files tell case apart",
                                 fmt::join(names, " and "));
}

std::string LimitsDisagree(const Family& family) {
  std::map<std::uint32_t, std::string> first_of;
  for (const DatabaseView& database : family.databases) {
    first_of.emplace(database.max_size_mb, database.type);
  }
  for (const ContractView& contract : family.contracts) {
    first_of.emplace(contract.max_size_mb, contract.type);
  }
  std::vector<std::string> limits;
  limits.reserve(first_of.size());
  for (const auto& [limit, type] : first_of) {
    limits.push_back(fmt::format("{} ({})", limit, type));
  }
  return limits.size() <= 1
             ? ""
             : fmt::format("max_size_mb is {}: its tables are trimmed at different sizes", fmt::join(limits, " and "));
}

std::string UnnamedDatabase(const Family& family) {
  for (const ContractView& contract : family.contracts) {
    if (std::none_of(family.databases.begin(), family.databases.end(),
                     [&contract](const DatabaseView& each) { return each.database == contract.database; })) {
      return contract.database.empty()
                 ? fmt::format("{} names no database: no pass cleans it", contract.type)
                 : fmt::format(
                       "no message stands for {}, which {} names: it has no size limit, and the host does not "
                       "look at it",
                       contract.database, contract.type);
    }
  }
  return "";
}

std::string ExcludedName(const Family& family) {
  return family.key == "state" ? "a database of this name, in any letter case, is never cleaned" : "";
}

/// What the table would be after the pass has written the options of the last contract over those of the first.
std::string TableAfterExchange(const ContractView& first, const ContractView& last) {
  return last.table_option.empty() ? first.name : last.table_option;
}

/// Whether rows go under the limit written that stayed under the own; 0 is no limit.
bool IsStricter(std::int64_t written, std::int64_t own) { return written != 0 && (own == 0 || written < own); }

std::string OtherTable(const Family& family, const std::string& table) {
  const ContractView& first = family.contracts.front();
  const bool twice =
      std::any_of(family.contracts.begin() + 1, family.contracts.end(),
                  [&table](const ContractView& each) { return WithoutCase(each.table) == WithoutCase(table); });
  return fmt::format("{} is not cleaned, and {} is cleaned {}", first.table, table, twice ? "twice" : "in its place");
}

std::string StricterLimits(const ContractView& first, const ContractView& last) {
  std::vector<std::string> limits;
  const auto compare = [&limits](const char* option, std::uint32_t written, std::uint32_t own, bool stricter) {
    if (stricter) {
      limits.push_back(fmt::format("{} {} instead of {}", option, written, own == 0 ? "none" : std::to_string(own)));
    }
  };
  compare("max_rows", last.max_rows, first.max_rows, IsStricter(last.max_rows, first.max_rows));
  compare("retention_days", last.retention_days, first.retention_days,
          IsStricter(KeptSeconds(last.retention_days), KeptSeconds(first.retention_days)));
  compare("max_size_mb", last.max_size_mb, first.max_size_mb, IsStricter(last.max_size_mb, first.max_size_mb));
  return limits.empty() ? "" : fmt::format("{} is cleaned with {}", first.table, fmt::join(limits, ", "));
}

// A pass over a database with a size limit leaves its first contract with the options of its last one, for the passes
// after it in the same process. Limits that are looser then keep rows longer, which does no harm.
std::string HarmfulExchange(const Family& family) {
  if (family.contracts.empty() || family.key == "state" ||
      DatabaseLimit(family.databases, family.contracts.back().database) == 0) {
    return "";
  }
  const ContractView& first = family.contracts.front();
  const ContractView& last = family.contracts.back();
  const std::string table = TableAfterExchange(first, last);
  const std::string harm =
      WithoutCase(table) == WithoutCase(first.table) ? StricterLimits(first, last) : OtherTable(family, table);
  return harm.empty() || family.contracts.size() == 1
             ? ""
             : fmt::format(
                   "from the second pass of a process on its first contract has the options of its last, {}: {}",
                   last.type, harm);
}

struct DatabaseRule {
  const char* name;
  std::string (*judge)(const Family& family);
};

constexpr std::array kDatabaseRules = {
    DatabaseRule{"databases_differ_in_case", &DifferInCase}, DatabaseRule{"size_limits_disagree", &LimitsDisagree},
    DatabaseRule{"database_unnamed", &UnnamedDatabase},      DatabaseRule{"name_excluded", &ExcludedName},
    DatabaseRule{"harmful_exchange", &HarmfulExchange},
};

std::string NameOf(const Family& family) {
  return family.contracts.empty() ? family.databases.front().database : family.contracts.front().database;
}

}  // namespace

std::vector<Finding> LintDatabases(const CatalogueView& catalogue) {
  std::vector<Finding> findings;
  for (const auto& [key, family] : Families(catalogue)) {
    for (const DatabaseRule& rule : kDatabaseRules) {
      if (const std::string text = rule.judge(family); !text.empty()) {
        findings.push_back({rule.name, NameOf(family), "", text});
      }
    }
  }
  return findings;
}

}  // namespace corvo::telemetry::host
