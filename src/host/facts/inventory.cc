#include "host/facts/inventory.h"

#include <fmt/core.h>

#include <cstdlib>

#include "storage/database_name.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

std::int64_t SizeWithLog(const fs::path& file) {
  fs::path log = file;
  log += "-wal";
  std::int64_t bytes = 0;
  for (const fs::path& part : {file, log}) {
    std::error_code missing;
    const std::uintmax_t size = fs::file_size(part, missing);
    bytes += missing ? 0 : static_cast<std::int64_t>(size);
  }
  return bytes;
}

TableCount CountRows(shared::TelemetryStorage& storage, const std::string& table) {
  // The storage owns the command, which lives as long as the storage.
  auto* command = new shared::SqlCommand(fmt::format("SELECT COUNT(*) FROM \"{}\"", table));
  const common::Error error = storage.Execute(command, false);
  if (!error.Failed()) {
    return {table, std::strtoll(command->GetResults()[0][0].GetColumnValue(), nullptr, 10), ""};
  }
  return {table, std::nullopt, shared::IsMissingTable(error) ? "" : error.what};
}

DatabaseCount CountDatabase(const std::string& name, const fs::path& path, const std::vector<ContractView>& contracts) {
  DatabaseCount count{.name = name, .path = path, .bytes = SizeWithLog(path), .tables = {}};
  shared::TelemetryStorage storage(path.string().c_str(), "");
  const common::Error opened = storage.GetLastError();
  for (const ContractView& contract : contracts) {
    count.tables.push_back(opened.Failed() ? TableCount{contract.table, std::nullopt, opened.what}
                                           : CountRows(storage, contract.table));
  }
  return count;
}

}  // namespace

std::vector<DatabaseCount> TakeInventory(const CatalogueView& catalogue, const fs::path& directory) {
  std::vector<DatabaseCount> counts;
  for (const DatabaseView& database : catalogue.databases) {
    const fs::path path = fs::absolute(directory / shared::AddDatabaseExtension(database.database)).lexically_normal();
    if (fs::exists(path)) {
      counts.push_back(CountDatabase(database.database, path, catalogue.Of(database.database)));
    }
  }
  return counts;
}

}  // namespace corvo::telemetry::host
