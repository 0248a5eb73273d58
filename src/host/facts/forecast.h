#pragma once

#include <cstdint>
#include <vector>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

// What a pass would delete, by the rules of the contracts, from counts alone. Pure.

/// The share of a limit, in percent, that a pass leaves free when it trims.
inline constexpr double kTrimMarginPercent = 10;

/// What has to be known of a table.
struct TableCounts {
  std::int64_t rows = 0;
  std::int64_t expired = 0;       ///< rows older than the retention at the moment of the pass; 0 without a retention
  std::uint32_t max_rows = 0;     ///< 0: no limit
  std::uint32_t max_size_mb = 0;  ///< that its contract gives for the database
  bool missing = false;
};

/// What has to be known of a database.
struct DatabaseCounts {
  std::vector<TableCounts> tables;  ///< in catalogue order
  std::uint32_t max_size_mb = 0;    ///< that the database's own message gives; 0: no limit
  std::uint32_t size_mb = 0;        ///< as the engine measures it
};

/// The rows that the first pass of a process would delete from each table, by rule, in the same order.
[[nodiscard]] std::vector<Deleted> Forecast(const DatabaseCounts& database);

/// The share of its rows that each table of the database would lose to the size limit; 0 for none. `max_size_mb` is
/// that of the table's contract.
[[nodiscard]] double TrimShare(const DatabaseCounts& database, std::uint32_t max_size_mb);

}  // namespace corvo::telemetry::host
