#include <time.h>

#include "cleanup/broken_down_utc.h"

namespace corvo::telemetry::cleanup {

std::optional<std::tm> BrokenDownUtc(std::int64_t seconds) {
  const __time64_t time = seconds;
  std::tm result{};
  // Times before 1970 fail on every platform, so that the same rows are left on each.
  if (seconds < 0 || _gmtime64_s(&result, &time) != 0) {
    return std::nullopt;
  }
  return result;
}

}  // namespace corvo::telemetry::cleanup
