#include "damage/one_pass.h"

#include "cleanup/data_cleanup.h"
#include "damage/base_databases.h"
#include "storage/storage_options.h"
#include "support/fake_clock.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::DatabaseEntry;
using telemetry::cleanup::DatabaseMap;

DatabaseMap Contracts(ContractFactory& factory) {
  DatabaseMap databases;
  DatabaseEntry& entry = databases["healthlog"];
  entry.max_size_mb = kMaxSizeMb;
  for (const CleanedTable& table : CleanedTables()) {
    entry.contracts.push_back(factory.Make(table.table, table.options));
  }
  return databases;
}

}  // namespace

std::filesystem::path DatabaseFile(const std::filesystem::path& folder) {
  return folder / (std::string(kDatabaseName) + ".db");
}

telemetry::common::Error CleanFolder(const std::filesystem::path& folder) {
  const FakeClock clock(FakeClock::kStart);
  ContractFactory factory;
  shared::SetDataDirectory(folder.string());
  const telemetry::common::Error result = DataCleanup().CleanDatabases(Contracts(factory));
  shared::SetDataDirectory("");
  return result;
}

}  // namespace corvo::test
