#pragma once

#include <cstdint>

namespace corvo::telemetry::cleanup {

/// How many of `count` rows go under a limit of `row_limit` rows: all above the limit less the margin (in percent).
[[nodiscard]] std::uint32_t RowsOverLimit(std::uint32_t count, std::uint32_t row_limit, double margin_percent);

/// The share of its rows that every table of a database loses, for sizes in megabytes with `limit_mb` at least 1 and at
/// most `total_mb`. Above 1 when the database is far over its limit.
[[nodiscard]] double TrimFactor(std::uint32_t total_mb, std::uint32_t limit_mb, double margin_percent);

/// How many of `count` rows the factor takes: at least one.
[[nodiscard]] std::uint32_t RowsToTrim(std::uint32_t count, double factor);

}  // namespace corvo::telemetry::cleanup
