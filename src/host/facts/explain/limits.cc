#include "host/facts/explain/limits.h"

#include <algorithm>
#include <limits>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/growth.h"

namespace corvo::telemetry::host {

std::int64_t KeptSeconds(std::uint32_t retention_days) { return -contracts::Cutoff(0, retention_days); }

bool LimitsRows(std::uint32_t max_rows) {
  return max_rows != 0 && RowsKept(max_rows) < std::numeric_limits<std::int32_t>::max();
}

std::optional<std::int64_t> ExpiryMoment(std::int64_t moment, std::uint32_t retention_days) {
  if (retention_days == 0) {
    return std::nullopt;
  }
  // No cutoff lies before 1970 or after the year 9999.
  const std::int64_t last_cutoff = std::max<std::int64_t>(moment, -1);
  return contracts::BrokenDownUtc(last_cutoff + 1) ? std::optional(last_cutoff + KeptSeconds(retention_days))
                                                   : std::nullopt;
}

Reach ReachOf(const TableState& table, bool size_limited) {
  Reach reach;
  if (table.contract.retention_days != 0) {
    reach.age_days = static_cast<double>(KeptSeconds(table.contract.retention_days)) / common::kSecondsPerDay;
    reach.first = Rule::kAge;
  }
  if (LimitsRows(table.contract.max_rows) && table.rows_per_day > 0) {
    reach.row_limit_days = static_cast<double>(RowsKept(table.contract.max_rows)) / table.rows_per_day;
  }
  const bool sooner = reach.row_limit_days && (!reach.age_days || *reach.row_limit_days < *reach.age_days);
  if (sooner || (LimitsRows(table.contract.max_rows) && !reach.age_days)) {
    reach.first = Rule::kRowLimit;
  }
  if (reach.first == Rule::kNone && size_limited) {
    reach.first = Rule::kSizeLimit;
  }
  return reach;
}

Rule FateOf(const RowPlace& place, const Deleted& next_pass) {
  if (place.expired) {
    return Rule::kAge;
  }
  if (place.older < next_pass.row_limit) {
    return Rule::kRowLimit;
  }
  return place.older < next_pass.row_limit + next_pass.size_limit ? Rule::kSizeLimit : Rule::kNone;
}

std::int64_t RowsUntilLimit(const RowPlace& place, std::uint32_t max_rows) {
  return std::max<std::int64_t>(RowsKept(max_rows) - place.newer, 0);
}

}  // namespace corvo::telemetry::host
