#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace corvo::telemetry::cleanup {

/// Broken-down UTC of a calendar time in seconds since 1970; none for times before 1970 and beyond the platform's
/// range.
[[nodiscard]] std::optional<std::tm> BrokenDownUtc(std::int64_t seconds);

}  // namespace corvo::telemetry::cleanup
