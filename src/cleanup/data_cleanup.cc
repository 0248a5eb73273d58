#include "cleanup/data_cleanup.h"

#include "cleanup/database_location.h"
#include "cleanup/database_map.h"
#include "cleanup/operation.h"
#include "common/log.h"
#include "contracts/catalogue.h"
#include "contracts/lookups.h"

using namespace corvo::telemetry;

namespace {

constexpr const char* kTag = "DataCleanup::ReadSource";

cleanup::DatabaseMap GroupCatalogue() {
  common::collection::ContractsCollection contracts;
  for (auto* contract : contracts::ContractCatalogue()) {
    contracts.Add(contract);
  }
  cleanup::DatabaseMap map;
  cleanup::GroupTablesByDatabase(contracts, map);
  return map;
}

}  // namespace

DataCleanup::~DataCleanup() = default;

void DataCleanup::Configure(const char* /*input*/) {}

common::Error DataCleanup::ReadSource() {
  Error result;
  CORVO_LOG(plog::info, kTag) << "Started DataCleanup::ReadSource";
  try {
    result = CleanDatabases(GroupCatalogue());
  } catch (const std::exception& e) {
    result = Error(e);
    cleanup::LogException(kTag, result);
  } catch (...) {
    result = common::MakeErrorFromException(std::current_exception());
    cleanup::LogException(kTag, result);
  }
  CORVO_LOG(plog::info, kTag) << result;
  CORVO_LOG(plog::info, kTag) << "Finished DataCleanup::ReadSource";
  return result;
}

common::Error DataCleanup::CleanDatabases(const DatabaseMap& databases) const {
  Error result;
  for (const auto& [name, database] : databases) {
    if (result.Failed()) {
      break;
    }
    if (database.contracts.empty()) {
      continue;
    }
    const std::string path = cleanup::GetDatabaseFullPathName(database.contracts.front());
    if (cleanup::DatabaseFileExists(path.c_str())) {
      result = CleanDatabase(database);
    }
  }
  return result;
}

common::Error DataCleanup::CleanDatabase(const DatabaseEntry& database) const {
  Error result;
  for (const auto* contract : database.contracts) {
    result = CleanTable(contract);
    if (result.Failed()) {
      return result;
    }
  }
  result = EnforceSizeLimit(&database);
  return result.Failed() ? result : Vacuum(database.contracts.front());
}

// Both steps always run; the first failure wins.
common::Error DataCleanup::CleanTable(const Message* contract) const {
  Error result;
  if (contract != nullptr) {
    const auto& options = contracts::GetPersistance(*contract).table_options();
    const std::uint32_t max_rows = options.max_rows();
    const std::uint32_t retention_days = options.retention_days();
    // Dropped on purpose: a type whose name cannot be read fails before any of its rows is touched.
    static_cast<void>(contracts::GetTableName(contract));
    result = DeleteExpiredRows(contract, retention_days);
    const Error extra = DeleteExtraRows(contract, max_rows);
    if (!result.Failed()) {
      result = extra;
    }
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
