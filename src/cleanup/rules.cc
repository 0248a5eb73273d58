#include "cleanup/rules.h"

#include <algorithm>
#include <limits>

namespace corvo::telemetry::cleanup {
namespace {

/// Truncates toward zero; what does not fit becomes the nearest value that does, so that a limit too large for the type
/// keeps every row.
std::int32_t Truncate(double value) {
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(value, kLowest, kHighest));
}

}  // namespace

std::uint32_t RowsOverLimit(std::uint32_t count, std::uint32_t row_limit, double margin_percent) {
  // Deliberately below the limit, and so is the trigger: the margin keeps the next pass from trimming again at once.
  const std::int32_t keep = Truncate(row_limit - margin_percent / 100.0 * row_limit);
  const auto signed_count = static_cast<std::int32_t>(count);
  return keep < signed_count ? static_cast<std::uint32_t>(signed_count - keep) : 0;
}

double TrimFactor(std::uint32_t total_mb, std::uint32_t limit_mb, double margin_percent) {
  // Deliberately divided by the limit, not by the total: the further over its limit, the harder a database is trimmed.
  return (margin_percent / 100.0 * limit_mb + (total_mb - limit_mb)) / limit_mb;
}

std::uint32_t RowsToTrim(std::uint32_t count, double factor) {
  const std::int32_t rows = Truncate(static_cast<std::int32_t>(count) * factor);
  return static_cast<std::uint32_t>(std::max(rows, 1));
}

}  // namespace corvo::telemetry::cleanup
