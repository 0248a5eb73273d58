#pragma once

#include <locale>

namespace corvo::telemetry::common {

/// The locale that timestamps are formatted with.
///
/// @throws std::runtime_error when the platform has named locales but not this one.
[[nodiscard]] std::locale TimestampLocale();

}  // namespace corvo::telemetry::common
