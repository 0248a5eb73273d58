#include <cstdlib>

#include "cleanup/data_cleanup.h"
#include "cleanup/measurement.h"
#include "cleanup/operation.h"
#include "common/log.h"
#include "contracts/lookups.h"

using namespace corvo::telemetry;

namespace {

constexpr const char* kTag = "DataCleanup::GetTableSize";

std::int32_t Measure(const cleanup::Rows& rows) {
  // Only the first row is read: the figure is the table's first page number times the page size, not the sum of all
  // its pages. Limits are tuned to it.
  if (rows.count == 0 || rows[0].count <= 1) {
    return 0;
  }
  return cleanup::Megabytes(std::atoi(rows[0][0].GetColumnValue()), std::atoi(rows[0][1].GetColumnValue()));
}

}  // namespace

std::int32_t DataCleanup::GetTableSize(const Message* contract) {
  if (contract == nullptr) {
    return 0;
  }
  try {
    corvo::shared::TelemetryStorage storage(contract, "");
    const std::string table = contracts::GetTableName(contract);
    return Measure(cleanup::RunQuery(storage, "SELECT pgsize, pageno FROM dbstat WHERE name='" + table + "'"));
  } catch (Error& e) {
    CORVO_LOG(plog::error, kTag) << kTag << " - exception : " << e;
  } catch (...) {
    CORVO_LOG(plog::error, kTag) << kTag << " - exception : UNKNOWN";
  }
  return 0;
}
