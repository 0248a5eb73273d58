#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

// What the limits of the contracts mean, as pure functions: what they need, the time included, they are given. The
// engine acts by them, and hosts foresee with them what it will do.

namespace corvo::telemetry::contracts {

/// Whether the value of an option is one of those that switch its rule off.
[[nodiscard]] bool IsOff(std::uint32_t value, const std::vector<std::uint32_t>& off_values);

/// The moment before which rows are expired, in seconds since 1970: `now` less the retention in days of 86,400 seconds.
[[nodiscard]] std::int64_t Cutoff(std::int64_t now, std::uint32_t retention_days);

/// Broken-down UTC of a calendar time in seconds since 1970; none for times before 1970 and after the year 9999.
[[nodiscard]] std::optional<std::tm> BrokenDownUtc(std::int64_t seconds);

/// The cutoff as text for SQL, for example 2024-05-01T00:00:00+00:00; empty, which no row is older than, for a cutoff
/// without broken-down UTC.
///
/// @throws std::runtime_error when the locale of timestamps is missing on this machine.
[[nodiscard]] std::string CutoffText(std::int64_t cutoff);

/// Decimal megabytes, to the nearest with halves going up, of a page size in bytes times a page number; 0 unless the
/// product, formed in 32 bits, is positive.
[[nodiscard]] std::int32_t Megabytes(std::int32_t page_size, std::int32_t page_number);

/// How many of `count` rows go under a limit of `row_limit` rows: all above the limit less the margin (in percent).
[[nodiscard]] std::uint32_t RowsOverLimit(std::uint32_t count, std::uint32_t row_limit, double margin_percent);

/// The share of its rows that every table of a database loses, for sizes in megabytes with `limit_mb` at least 1 and at
/// most `total_mb`. Above 1 when the database is far over its limit.
[[nodiscard]] double TrimFactor(std::uint32_t total_mb, std::uint32_t limit_mb, double margin_percent);

/// How many of `count` rows the factor takes: at least one.
[[nodiscard]] std::uint32_t RowsToTrim(std::uint32_t count, double factor);

}  // namespace corvo::telemetry::contracts
