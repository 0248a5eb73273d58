#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "damage/image.h"
#include "support/contract_factory.h"

namespace corvo::test {

/// A contract and the table that it names.
struct CleanedTable {
  const char* table;
  ContractOptions options;
};

inline constexpr const char* kDatabaseName = "HealthLog";

/// Largest key of any table in the base databases.
inline constexpr std::int64_t kLargestKey = 240;

/// The contracts of the base databases. Each database also has tables that no contract names.
[[nodiscard]] const std::vector<CleanedTable>& CleanedTables();

/// An undamaged database from which damaged images are made.
struct BaseDatabase {
  std::string name;
  Image image;
  Image older;                            ///< the same before its last changes, for writes that got lost
  std::vector<std::uint32_t> tree_pages;  ///< of tables and indexes
  std::vector<std::uint32_t> overflow_pages;
};

/// Databases of several page sizes, encodings, vacuum and journal modes, each with expired rows, with more rows than
/// its limits admit, with indexes, long rows and free pages.
[[nodiscard]] const std::vector<BaseDatabase>& BaseDatabases();

}  // namespace corvo::test
