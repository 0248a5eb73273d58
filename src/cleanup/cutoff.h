#pragma once

#include <cstdint>
#include <string>

namespace corvo::telemetry::cleanup {

/// The moment before which rows are expired, in seconds since 1970: `now` less the retention in days of 86,400 seconds.
[[nodiscard]] std::int64_t Cutoff(std::int64_t now, std::uint32_t retention_days);

/// The cutoff as text for SQL, for example 2024-05-01T00:00:00+00:00; empty, which no row is older than, for a cutoff
/// before 1970.
///
/// @throws std::runtime_error when the locale of timestamps is missing on this machine.
[[nodiscard]] std::string CutoffText(std::int64_t cutoff);

}  // namespace corvo::telemetry::cleanup
