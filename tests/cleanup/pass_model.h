#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cleanup/database_map.h"
#include "support/contract_factory.h"

namespace corvo::test {

using telemetry::cleanup::DatabaseEntry;
using telemetry::cleanup::DatabaseMap;

/// One row, known by its value; its age is none when its time cannot be read.
struct ModelRow {
  std::int64_t value;
  std::optional<std::int64_t> age_seconds;
  int notation = 0;  ///< how the time is written: as UTC, with a Z, two hours east
};

struct ModelContract {
  std::string type;
  ContractOptions options;

  [[nodiscard]] const std::string& Table() const { return options.table.empty() ? type : options.table; }
};

/// One database as the rules see it: nothing here knows how the engine works.
struct ModelDatabase {
  std::string name;
  bool present = true;
  bool write_ahead_log = false;
  std::int64_t filler_bytes = 0;  ///< size of a foreign table that lies before the others
  std::uintmax_t file_bytes = 0;  ///< length to which the file is stretched; 0 leaves it
  std::uint32_t max_size_mb = 0;
  std::vector<ModelContract> contracts;
  std::map<std::string, std::vector<ModelRow>> tables;  ///< rows from the oldest inserted on
};

/// Writes the database into the directory, unless it is missing.
void Create(const ModelDatabase& database, const std::filesystem::path& directory);

/// The contracts of the databases, as a pass takes them.
DatabaseMap Contracts(const std::vector<ModelDatabase>& databases, ContractFactory& factory);

/// What the rules leave of the database in one pass. Reads the places of tables in the file from the directory, so it
/// must run before the pass.
void CleanModel(ModelDatabase& database, const std::filesystem::path& directory);

/// The values left, by table; of the model and of the file.
using Content = std::map<std::string, std::vector<std::int64_t>>;
Content ExpectedContent(const ModelDatabase& database);
Content ActualContent(const ModelDatabase& database, const std::filesystem::path& directory);

}  // namespace corvo::test
