#include "cleanup/cutoff.h"

#include "cleanup/broken_down_utc.h"
#include "common/timestamp.h"

namespace corvo::telemetry::cleanup {

std::int64_t Cutoff(std::int64_t now, std::uint32_t retention_days) {
  constexpr std::uint32_t kSecondsPerDay = 86'400;
  // Deliberately 32 bits wide: retentions above 49,710 days wrap.
  const std::uint32_t seconds = retention_days * kSecondsPerDay;
  return now - std::int64_t{seconds};
}

std::string CutoffText(std::int64_t cutoff) {
  // -1 is the calendar's "no time".
  if (cutoff == -1) {
    return {};
  }
  const auto time = BrokenDownUtc(cutoff);
  return time ? common::FormatUtcTime(*time, 0) : std::string();
}

}  // namespace corvo::telemetry::cleanup
