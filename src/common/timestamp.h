#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "common/commons_export.h"

namespace corvo::telemetry::common {

/// Of every day, as Unix time counts: no leap seconds.
inline constexpr std::int64_t kSecondsPerDay = 86'400;

/// The timestamp text of a broken-down UTC time, of the form 2024-05-01T12:30:00+00:00.
///
/// @param time broken-down time: seconds 0–61, minutes 0–59, hours 0–23, day of month 1–31, month 0–11, year since
///   1900 not negative, weekday 0–6, day of year 0–365.
/// @param offset_hours offset from UTC in whole hours, written at the end as sign, hours and minutes.
/// @return the text; empty when a field is out of range or formatting fails.
/// @throws std::runtime_error when the locale "en_US" does not exist on this machine.
[[nodiscard]] CORVO_COMMONS_API std::string FormatUtcTime(const std::tm& time, std::int32_t offset_hours);

/// Replaces the last five characters of `text`, whatever they are, by the offset.
///
/// @throws std::out_of_range when `text` is shorter than five characters.
[[nodiscard]] CORVO_COMMONS_API std::string ReplaceZone(std::string text, std::int32_t offset_hours);

}  // namespace corvo::telemetry::common
