#include "common/timestamp.h"

#include <cstdlib>
#include <iomanip>
#include <sstream>

#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {
namespace {

bool InRange(int value, int first, int last) { return value >= first && value <= last; }

bool IsValid(const std::tm& time) {
  return InRange(time.tm_sec, 0, 61) && InRange(time.tm_min, 0, 59) && InRange(time.tm_hour, 0, 23) &&
         InRange(time.tm_mday, 1, 31) && InRange(time.tm_mon, 0, 11) && time.tm_year >= 0 &&
         InRange(time.tm_wday, 0, 6) && InRange(time.tm_yday, 0, 365);
}

/// Writes the time with the local zone; false when the stream has gone bad.
bool Write(const std::tm& time, std::ostream& stream) {
  try {
    // Lack of memory must come out as what it is: kept as a bad state it would give an empty text, and a cutoff that
    // silently expires nothing.
    stream.exceptions(std::ios_base::badbit);
    stream << std::put_time(&time, "%Y-%m-%dT%H:%M:%S%z");
    return stream.good();
  } catch (const std::ios_base::failure&) {
    return false;
  }
}

std::string TwoDigits(std::int64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); }

}  // namespace

std::string FormatUtcTime(const std::tm& time, std::int32_t offset_hours) {
  if (!IsValid(time) || !CanFormat(time)) {
    return {};
  }
  std::ostringstream stream;
  stream.imbue(TimestampLocale());
  return Write(time, stream) ? ReplaceZone(stream.str(), offset_hours) : std::string();
}

// Always five characters and always the last: the local zone that %z wrote must never reach the output.
std::string ReplaceZone(std::string text, std::int32_t offset_hours) {
  const std::int64_t hours = std::llabs(std::int64_t{offset_hours});
  const std::string offset = (offset_hours < 0 ? "-" : "+") + TwoDigits(hours) + ":" + TwoDigits(0);
  return text.replace(text.size() - 5, 5, offset);
}

}  // namespace corvo::telemetry::common
