#include "host/show/time_text.h"

#include <fmt/core.h>

#include <chrono>
#include <regex>

#include "host/show/failure.h"

namespace corvo::telemetry::host {

using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

std::string TimeText(std::int64_t seconds) {
  const sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}+00:00", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                     clock.minutes().count(), clock.seconds().count());
}

std::int64_t StartOfToday() {
  const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  return std::chrono::duration_cast<std::chrono::seconds>(today.time_since_epoch()).count();
}

std::int64_t ParseDay(const std::string& text) {
  std::smatch parts;
  if (std::regex_match(text, parts, std::regex(R"((\d{4})-(\d{2})-(\d{2}))"))) {
    const year_month_day date(std::chrono::year(std::stoi(parts[1])),
                              std::chrono::month(static_cast<unsigned>(std::stoi(parts[2]))),
                              std::chrono::day(static_cast<unsigned>(std::stoi(parts[3]))));
    if (date.ok()) {
      return std::chrono::duration_cast<std::chrono::seconds>(sys_days(date).time_since_epoch()).count();
    }
  }
  throw CommandFailure(kUsage, fmt::format("--now: {} is no day of the form 2024-05-01", text));
}

}  // namespace corvo::telemetry::host
