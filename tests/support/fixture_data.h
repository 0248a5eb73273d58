#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace corvo::test {

/// How many rows of each kind a table starts with.
struct TableRows {
  std::int64_t expired = 0;  ///< older than every retention, with the smallest rowids
  std::int64_t fresh = 0;    ///< younger than every retention
};

/// Databases of the contract catalogue to create.
struct FixturePlan {
  std::string journal_mode = "DELETE";               ///< or WAL
  TableRows rows = {100, 100};                       ///< of every table
  std::map<std::string, TableRows> exceptions = {};  ///< by table name, instead of `rows`
  std::vector<std::string> databases = {};           ///< names without extension; empty means all of the catalogue
};

/// Creates the databases with all tables of their contracts: a column a field, every row unlike any other row.
void WriteFixture(const std::filesystem::path& directory, const FixturePlan& plan);

/// An INSERT statement for `count` rows, `age_days` old, of one of those tables; rows are numbered from `first`.
[[nodiscard]] std::string InsertRows(const std::string& table, std::int64_t first, std::int64_t count, int age_days);

}  // namespace corvo::test
