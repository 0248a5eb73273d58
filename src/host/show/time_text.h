#pragma once

#include <cstdint>
#include <string>

namespace corvo::telemetry::host {

/// Seconds since 1970-01-01 UTC as 2024-05-01T12:30:00+00:00.
[[nodiscard]] std::string TimeText(std::int64_t seconds);

/// The start of today in UTC, in seconds since 1970-01-01.
[[nodiscard]] std::int64_t StartOfToday();

/// The start of a day in UTC from text of the form 2024-05-01.
///
/// @throws CommandFailure (`kUsage`) when the text is no such day.
[[nodiscard]] std::int64_t ParseDay(const std::string& text);

}  // namespace corvo::telemetry::host
