#include <cstdlib>

#include "cleanup/data_cleanup.h"
#include "cleanup/missing_table_filter.h"
#include "cleanup/operation.h"
#include "common/log.h"
#include "contracts/lookups.h"

using namespace corvo::telemetry;

namespace {

constexpr const char* kTag = "DataCleanup::GetRowCount";
constexpr int kNoRowsLine = 464;
constexpr int kHandlerLine = 474;
constexpr int kNullLine = 480;

std::uint32_t CountRows(corvo::shared::TelemetryStorage& storage, const std::string& table) {
  const cleanup::Rows rows = cleanup::RunQuery(storage, "SELECT COUNT(*) AS rows FROM " + table);
  if (rows.count == 0 || rows[0].count == 0) {
    throw std::runtime_error(std::string(kTag) + "(" + std::to_string(kNoRowsLine) + ") query returned 0 rows");
  }
  return static_cast<std::uint32_t>(std::atoi(rows[0][0].GetColumnValue()));
}

common::Error Count(const google::protobuf::Message* contract, std::uint32_t& count) {
  if (contract == nullptr) {
    return cleanup::OperationError(kTag, kNullLine, ") message is NULL");
  }
  try {
    corvo::shared::TelemetryStorage storage(contract, "");
    count = CountRows(storage, contracts::GetTableName(contract));
    return {};
  } catch (common::Error& e) {
    CORVO_LOG(plog::error, kTag) << kTag << " - exception : " << e;
    return e;
  } catch (...) {
    // Blind to what was caught, and without a separator in the log: hosts know both texts.
    const common::Error error = cleanup::OperationError(kTag, kHandlerLine, ") - UNKNOWN EXCEPTION");
    CORVO_LOG(plog::error, kTag) << kTag << error;
    return error;
  }
}

}  // namespace

common::Error DataCleanup::GetRowCount(const Message* contract, std::uint32_t& count) {
  Error result = Count(contract, count);
  cleanup::ClearNoSuchTableError(result);
  return result;
}
