#include "host/facts/forecast.h"

#include <algorithm>

#include "contracts/rules.h"

namespace corvo::telemetry::host {
namespace {

/// The engine counts in 32 bits.
std::uint32_t Narrow(std::int64_t rows) { return static_cast<std::uint32_t>(rows); }

Deleted ForecastTable(const DatabaseCounts& database, const TableCounts& table) {
  Deleted deleted;
  if (table.missing) {
    return deleted;
  }
  deleted.expired = table.expired;
  std::int64_t left = table.rows - deleted.expired;
  if (table.max_rows != 0) {
    deleted.row_limit =
        std::min<std::int64_t>(left, contracts::RowsOverLimit(Narrow(left), table.max_rows, kTrimMarginPercent));
    left -= deleted.row_limit;
  }
  if (const double share = TrimShare(database, table.max_size_mb); share > 0) {
    deleted.size_limit = std::min<std::int64_t>(left, contracts::RowsToTrim(Narrow(left), share));
  }
  return deleted;
}

}  // namespace

std::vector<Deleted> Forecast(const DatabaseCounts& database) {
  std::vector<Deleted> deleted;
  for (const TableCounts& table : database.tables) {
    deleted.push_back(ForecastTable(database, table));
  }
  return deleted;
}

double TrimShare(const DatabaseCounts& database, std::uint32_t max_size_mb) {
  const bool over = database.size_mb != 0 && max_size_mb <= database.size_mb;
  return database.max_size_mb == 0 || max_size_mb == 0 || !over
             ? 0
             : contracts::TrimFactor(database.size_mb, max_size_mb, kTrimMarginPercent);
}

}  // namespace corvo::telemetry::host
