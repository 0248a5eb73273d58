#include "host/facts/directory_state.h"

#include <algorithm>
#include <system_error>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/database_reader.h"
#include "host/facts/file_problem.h"
#include "host/facts/look.h"
#include "host/facts/reading.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

DatabaseState ReadDatabaseState(const DatabaseView& view, const CatalogueView& catalogue, const fs::path& directory,
                                std::int64_t now) {
  DatabaseState database{.name = view.database, .path = DatabaseFile(view, directory), .max_size_mb = view.max_size_mb};
  for (const ContractView& contract : catalogue.Of(view.database)) {
    database.tables.push_back({.contract = contract});
  }
  if (!HasFile(database.path)) {
    database.missing = true;
    return database;
  }
  fs::path log = database.path;
  log += "-wal";
  database.file_bytes = FileBytes(database.path);
  database.wal_bytes = FileBytes(log);
  const shared::StorageOptionsScope reading(ReadingOptions(database.path));
  if (const common::Error error = ReadDatabase(database, now); error.Failed()) {
    database.problem = ProblemOf(error, database.path, Access::kRead);
  }
  return database;
}

}  // namespace

DirectoryState ReadDirectoryState(const fs::path& directory, const std::string& source,
                                  const std::vector<std::string>& only, std::int64_t now) {
  DirectoryState state{.directory = directory, .directory_source = source, .now = now};
  const CatalogueView catalogue = ReadCatalogue();
  for (const DatabaseView& database : catalogue.databases) {
    if (only.empty() || std::find(only.begin(), only.end(), database.database) != only.end()) {
      state.databases.push_back(ReadDatabaseState(database, catalogue, directory, now));
    }
  }
  return state;
}

bool IsOverAge(const TableState& table, std::int64_t now) {
  const std::uint32_t days = table.contract.retention_days;
  return days != 0 && table.oldest && *table.oldest < contracts::Cutoff(now, days) - common::kSecondsPerDay;
}

bool IsOverRowLimit(const TableState& table) {
  return table.contract.max_rows != 0 && table.rows > std::int64_t{table.contract.max_rows};
}

bool IsOverSizeLimit(const DatabaseState& database) {
  return database.max_size_mb != 0 && (database.engine_mb >= database.max_size_mb ||
                                       database.file_bytes > std::int64_t{database.max_size_mb} * 1'000'000);
}

bool NeedsAttention(const TableState& table, std::int64_t now) {
  return !table.problem.empty() || IsOverAge(table, now) || IsOverRowLimit(table) || table.no_time.rows > 0 ||
         table.unreadable.rows > 0 || table.future.rows > 0;
}

bool NeedsAttention(const DatabaseState& database, std::int64_t now) {
  return database.problem || IsOverSizeLimit(database) ||
         std::any_of(database.tables.begin(), database.tables.end(),
                     [now](const TableState& table) { return NeedsAttention(table, now); });
}

}  // namespace corvo::telemetry::host
