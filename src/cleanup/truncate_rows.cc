#include "cleanup/data_cleanup.h"
#include "cleanup/missing_table_filter.h"
#include "cleanup/operation.h"
#include "contracts/lookups.h"

using namespace corvo::telemetry;

namespace {

constexpr int kHandlerLine = 540;

std::string DeleteOldest(const std::string& table, std::uint32_t count) {
  return "DELETE FROM " + table + " WHERE rowid IN (SELECT rowid FROM " + table + " ORDER BY rowid ASC LIMIT " +
         std::to_string(count) + ");";
}

}  // namespace

common::Error DataCleanup::TruncateRows(const Message* contract, std::uint32_t count) {
  Error result;
  if (contract == nullptr || count == 0) {
    return result;
  }
  try {
    corvo::shared::TelemetryStorage storage(contract, "");
    const std::string sql = DeleteOldest(contracts::GetTableName(contract), count);
    result = storage.Execute(new corvo::shared::SqlCommand(sql.c_str()), false);
  } catch (...) {
    // One wording whatever was caught: hosts know it.
    result = cleanup::OperationError("DataCleanup::TruncateRows", kHandlerLine, ") message is NULL");
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
