#pragma once

#include <ctime>
#include <locale>

namespace corvo::telemetry::common {

/// The locale that timestamps are formatted with.
///
/// @throws std::runtime_error when the platform has named locales but not this one.
[[nodiscard]] std::locale TimestampLocale();

/// Whether the platform's C runtime can format the time, every field of which is in the range that timestamps allow.
[[nodiscard]] bool CanFormat(const std::tm& time);

}  // namespace corvo::telemetry::common
