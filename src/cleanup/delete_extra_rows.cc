#include <algorithm>
#include <stdexcept>
#include <vector>

#include "cleanup/data_cleanup.h"
#include "cleanup/missing_table_filter.h"
#include "cleanup/rules.h"
#include "common/log.h"

using namespace corvo::telemetry;

namespace {

constexpr const char* kTag = "DataCleanup::DeleteExtraRows";

/// Row limits that mean no limit.
const std::vector<std::uint32_t> no_row_limit = {0};

}  // namespace

common::Error DataCleanup::DeleteExtraRows(const Message* contract, std::uint32_t row_limit) const {
  Error result;
  if (contract == nullptr || std::find(no_row_limit.begin(), no_row_limit.end(), row_limit) != no_row_limit.end()) {
    return result;
  }
  try {
    std::uint32_t count = 0;
    result = GetRowCount(contract, count);
    if (!result.Failed()) {
      const std::uint32_t extra = cleanup::RowsOverLimit(count, row_limit, trimMarginPercent);
      if (extra != 0) {
        result = TruncateRows(contract, extra);
      }
    }
  } catch (const char* text) {
    // The caught text goes into the result only.
    CORVO_LOG(plog::error, kTag) << kTag << " - exception : ";
    result = Error(std::runtime_error(text));
  } catch (...) {
    CORVO_LOG(plog::error, kTag) << kTag << " - exception : UNKNOWN ";
    result = common::MakeErrorFromException(std::current_exception());
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
