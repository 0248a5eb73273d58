#include "cleanup/trimming.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "cleanup/data_cleanup.h"
#include "cleanup/database_location.h"
#include "cleanup/missing_table_filter.h"
#include "cleanup/rules.h"

using namespace corvo::telemetry;

namespace {

/// Size limits that mean no limit.
const std::vector<std::uint32_t> no_size_limit = {0};

bool IsUnlimited(std::uint32_t limit_mb) {
  return std::find(no_size_limit.begin(), no_size_limit.end(), limit_mb) != no_size_limit.end();
}

std::uint32_t SumOfTables(const DatabaseEntry& database) {
  std::uint32_t total = 0;
  for (const auto* contract : database.contracts) {
    total += static_cast<std::uint32_t>(DataCleanup::GetTableSize(contract));
  }
  return total;
}

std::uint32_t FileSize(const DatabaseEntry& database) {
  try {
    const std::filesystem::path file = cleanup::GetDatabaseFullPathName(database.contracts.back());
    return static_cast<std::uint32_t>(std::filesystem::file_size(std::filesystem::absolute(file)) / 1'000'000);
  } catch (const std::exception&) {
    return 0;
  }
}

common::Error TrimTable(const google::protobuf::Message* contract, double factor) {
  std::uint32_t count = 0;
  const common::Error result = DataCleanup::GetRowCount(contract, count);
  return result.Failed() ? result : DataCleanup::TruncateRows(contract, cleanup::RowsToTrim(count, factor));
}

}  // namespace

common::Error DataCleanup::EnforceSizeLimit(const DatabaseEntry* database) const {
  Error result;
  if (database == nullptr || database->contracts.empty() || IsUnlimited(database->max_size_mb)) {
    return result;
  }
  std::uint32_t total = SumOfTables(*database);
  if (total == 0) {
    total = FileSize(*database);
  }
  // Measured once, and a failing table does not stop the others: the result is that of the last table that was trimmed.
  for (const auto* contract : database->contracts) {
    const std::uint32_t limit = cleanup::ReadLimitThroughFirst(contract, database->contracts.front());
    if (!IsUnlimited(limit) && total != 0 && limit <= total) {
      result = TrimTable(contract, cleanup::TrimFactor(total, limit, trimMarginPercent));
    }
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
