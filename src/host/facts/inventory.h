#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"

namespace corvo::telemetry::host {

struct TableCount {
  std::string table;
  std::optional<std::int64_t> rows;  ///< none when the table is missing or cannot be read
  std::string problem;               ///< why it cannot be read; empty for a missing table
};

/// One database file that exists.
struct DatabaseCount {
  std::string name;  ///< as the option spells it
  std::filesystem::path path;
  std::int64_t bytes;  ///< the file with its write-ahead log
  std::vector<TableCount> tables;
};

/// Counts the rows and sizes of the catalogue's databases in the directory, in catalogue order. Missing files are left
/// out.
[[nodiscard]] std::vector<DatabaseCount> TakeInventory(const CatalogueView& catalogue,
                                                       const std::filesystem::path& directory);

}  // namespace corvo::telemetry::host
