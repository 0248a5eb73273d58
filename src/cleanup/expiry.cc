#include <vector>

#include "cleanup/clock.h"
#include "cleanup/data_cleanup.h"
#include "cleanup/database_location.h"
#include "cleanup/operation.h"
#include "contracts/lookups.h"
#include "contracts/rules.h"

using namespace corvo::telemetry;

namespace {

constexpr const char* kTag = "DataCleanup::DeleteExpiredRows";

/// Retentions that keep rows for ever.
const std::vector<std::uint32_t> kNoExpiry = {0};

void DeleteRowsBefore(const std::string& cutoff, const std::string& table, corvo::shared::TelemetryStorage& storage) {
  // An empty cutoff is sent all the same: datetime('') is NULL, which no row is older than.
  cleanup::RunStatement(storage, "DELETE FROM " + table + " WHERE datetime(time) < datetime('" + cutoff + "');");
}

}  // namespace

common::Error DataCleanup::DeleteExpiredRows(const Message* contract, std::uint32_t retention_days) {
  Error result;
  if (contract == nullptr || contracts::IsOff(retention_days, kNoExpiry)) {
    return result;
  }
  try {
    corvo::shared::TelemetryStorage storage(cleanup::GetDatabaseFileName(contract).c_str(), "");
    const std::string table = contracts::GetTableName(contract);
    const std::int64_t cutoff = contracts::Cutoff(cleanup::CurrentTime(), retention_days);
    DeleteRowsBefore(contracts::CutoffText(cutoff), table, storage);
  } catch (Error& e) {
    result = e;
    cleanup::LogException(kTag, result);
  } catch (...) {
    cleanup::LogException(kTag, ": UNKNOWN");
    result = common::MakeErrorFromException(std::current_exception());
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
