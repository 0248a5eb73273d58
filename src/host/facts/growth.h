#pragma once

#include <cstdint>
#include <optional>

namespace corvo::telemetry::host {

// How the rows of a table become more. Pure.

/// What has to be known of a table; times in days.
struct Growth {
  std::int64_t rows = 0;          ///< that a pass leaves when it has deleted the expired ones
  std::int64_t never_expire = 0;  ///< of these
  double rows_per_day = 0;        ///< that come in
  double days_covered = 0;        ///< age of the oldest row that can expire and has not
  double retention_days = 0;      ///< 0: none expires
  std::uint32_t max_rows = 0;     ///< 0: no limit
};

/// The most rows that a pass leaves a table with this limit, which is not 0: more than these are trimmed to as many.
[[nodiscard]] std::int64_t RowsKept(std::uint32_t max_rows);

/// In how many days the table holds more rows than a pass leaves it, when as many come in as now and expire at their
/// time; 0: now. The rows that are there count as spread evenly over the days that they cover. None when that never
/// happens.
[[nodiscard]] std::optional<double> DaysToRowLimit(const Growth& growth);

}  // namespace corvo::telemetry::host
