#include "host/facts/growth.h"

#include <algorithm>
#include <limits>

#include "contracts/rules.h"
#include "host/facts/forecast.h"

namespace corvo::telemetry::host {

std::int64_t RowsKept(std::uint32_t max_rows) {
  // Limits so large that a pass keeps every row have no number of rows that breaks them.
  constexpr std::int32_t kMostRows = std::numeric_limits<std::int32_t>::max();
  return kMostRows - std::int64_t{contracts::RowsOverLimit(kMostRows, max_rows, kTrimMarginPercent)};
}

std::optional<double> DaysToRowLimit(const Growth& growth) {
  if (growth.max_rows == 0) {
    return std::nullopt;
  }
  const auto room = static_cast<double>(RowsKept(growth.max_rows) - growth.rows);
  if (room < 0) {
    return 0;
  }
  if (growth.rows_per_day <= 0) {
    return std::nullopt;
  }
  // As long as nothing expires, every row that comes in is one more.
  const double alone = room / growth.rows_per_day;
  const double quiet = std::max(growth.retention_days - growth.days_covered, 0.0);
  if (growth.retention_days == 0 || alone <= quiet) {
    return alone;
  }
  // Then today's rows go one after the other, until there are only such as came after today.
  const auto expiring = static_cast<double>(growth.rows - growth.never_expire);
  const double gain = growth.rows_per_day * growth.retention_days - expiring;  // until all of today's are gone
  if (gain <= room) {
    return std::nullopt;
  }
  const double quiet_gain = growth.rows_per_day * quiet;
  return quiet + (growth.retention_days - quiet) * (room - quiet_gain) / (gain - quiet_gain);
}

}  // namespace corvo::telemetry::host
