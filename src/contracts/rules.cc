#include "contracts/rules.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "common/timestamp.h"

namespace corvo::telemetry::contracts {
namespace {

// Deliberately 32 bits wide: products and sums wrap.
std::int32_t WrappingProduct(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

std::int32_t WrappingSum(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

/// Truncates toward zero; what does not fit becomes the nearest value that does, so that a limit too large for the type
/// keeps every row.
std::int32_t Truncate(double value) {
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(value, kLowest, kHighest));
}

/// As the C library's calendar has it: months and days of the year from 0, years from 1900.
std::tm BreakDown(std::chrono::sys_seconds moment) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(moment - day);
  std::tm result{};
  result.tm_sec = static_cast<int>(time.seconds().count());
  result.tm_min = static_cast<int>(time.minutes().count());
  result.tm_hour = static_cast<int>(time.hours().count());
  result.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  result.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  result.tm_year = static_cast<int>(date.year()) - 1900;
  result.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding());
  result.tm_yday = static_cast<int>((day - std::chrono::sys_days(date.year() / 1 / 1)).count());
  return result;
}

}  // namespace

bool IsOff(std::uint32_t value, const std::vector<std::uint32_t>& off_values) {
  return std::find(off_values.begin(), off_values.end(), value) != off_values.end();
}

std::int64_t Cutoff(std::int64_t now, std::uint32_t retention_days) {
  constexpr std::uint32_t kSecondsPerDay = 86'400;
  // Deliberately 32 bits wide: retentions above 49,710 days wrap.
  const std::uint32_t seconds = retention_days * kSecondsPerDay;
  return now - std::int64_t{seconds};
}

std::optional<std::tm> BrokenDownUtc(std::int64_t seconds) {
  // A calendar of our own: those of the platforms differ in the times that they take, and the same rows shall be left
  // on each. SQLite knows no year beyond 9999.
  constexpr std::chrono::sys_seconds kEnd = std::chrono::sys_days(std::chrono::year(10'000) / 1 / 1);
  if (seconds < 0 || seconds >= kEnd.time_since_epoch().count()) {
    return std::nullopt;
  }
  return BreakDown(std::chrono::sys_seconds(std::chrono::seconds(seconds)));
}

std::string CutoffText(std::int64_t cutoff) {
  const auto time = BrokenDownUtc(cutoff);
  return time ? common::FormatUtcTime(*time, 0) : std::string();
}

std::int32_t Megabytes(std::int32_t page_size, std::int32_t page_number) {
  const std::int32_t bytes = WrappingProduct(page_size, page_number);
  return bytes > 0 ? WrappingSum(bytes, 500'000) / 1'000'000 : 0;
}

std::uint32_t RowsOverLimit(std::uint32_t count, std::uint32_t row_limit, double margin_percent) {
  // Deliberately below the limit, and so is the trigger: the margin is kept free.
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

}  // namespace corvo::telemetry::contracts
