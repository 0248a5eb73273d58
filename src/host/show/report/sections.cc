#include "host/show/report/sections.h"

#include <fmt/core.h>

#include <algorithm>

#include "common/timestamp.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {

Json Figure(std::int64_t number) { return {{"value", number}, {"text", WithSeparators(number)}}; }

Json Size(std::int64_t bytes) { return {{"value", bytes}, {"text", HumanBytes(bytes)}}; }

void PutDeleted(Json& object, const Deleted& deleted) {
  for (const Reason& reason : Reasons()) {
    object[reason.name] = Figure(deleted.*reason.rows);
  }
  object["deleted"] = Figure(deleted.Sum());
}

std::string Percent(double part, double whole) {
  return fmt::format("{:.2f}", whole > 0 ? std::clamp(100 * part / whole, 0.0, 100.0) : 0.0);
}

std::string Moment(std::int64_t seconds) {
  constexpr std::int64_t kFirst = -62'167'219'200;  // 0000-01-01
  constexpr std::int64_t kLast = 253'402'300'799;   // 9999-12-31
  if (seconds < kFirst || seconds > kLast) {
    return "at an unknown time";
  }
  const std::string text = TimeText(seconds);
  return text.substr(0, 10) + " " + text.substr(11, 5) + " UTC";
}

std::string Duration(double seconds) {
  if (seconds < 0.0995) {
    return fmt::format("{:.0f} ms", std::max(seconds, 0.0) * 1000);
  }
  if (seconds < 59.995) {
    return fmt::format("{:.2f} s", seconds);
  }
  const double whole = std::min(seconds, 1e12);
  return fmt::format("{} min {:.0f} s", WithSeparators(static_cast<std::int64_t>(whole / 60)),
                     whole - 60 * static_cast<double>(static_cast<std::int64_t>(whole / 60)));
}

std::string Days(std::int64_t seconds) {
  return seconds < common::kSecondsPerDay ? "less than a day" : Counted(seconds / common::kSecondsPerDay, "day");
}

const std::vector<Reason>& Reasons() {
  static const std::vector<Reason> reasons = {{"expired", "Expired", &Deleted::expired},
                                              {"row_limit", "Row limit", &Deleted::row_limit},
                                              {"size_limit", "Size limit", &Deleted::size_limit}};
  return reasons;
}

Json Legend() {
  Json legend = Json::array();
  for (const Reason& reason : Reasons()) {
    legend.push_back({{"reason", reason.name}, {"label", reason.label}});
  }
  return legend;
}

}  // namespace corvo::telemetry::host
