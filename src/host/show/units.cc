#include "host/show/units.h"

#include <fmt/core.h>

#include <array>

namespace corvo::telemetry::host {

std::string WithSeparators(std::int64_t number) {
  std::string text = std::to_string(number);
  const std::size_t first_digit = number < 0 ? 1 : 0;
  for (std::size_t end = text.size(); end > first_digit + 3;) {
    end -= 3;
    text.insert(end, 1, ',');
  }
  return text;
}

std::string HumanBytes(std::int64_t bytes) {
  constexpr std::array kUnits = {"kB", "MB", "GB", "TB"};
  if (bytes < 1000 && bytes > -1000) {
    return fmt::format("{} B", bytes);
  }
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  // 999.95 would be written as 1000.0.
  while ((value >= 999.95 || value <= -999.95) && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  return fmt::format("{:.1f} {}", value, kUnits.at(unit));
}

std::string Printable(std::string text) {
  for (std::size_t index = 0; index < text.size(); ++index) {
    const auto byte = static_cast<unsigned char>(text[index]);
    if (byte < 0x20 || byte == 0x7f) {
      text[index] = '?';
    } else if (index > 0 && text[index - 1] == '\xc2' && byte < 0xa0) {
      text.replace(index - 1, 2, "??");  // U+0080 to U+009F are control characters too
    }
  }
  return text;
}

std::string Counted(std::int64_t number, const std::string& noun) {
  return fmt::format("{} {}{}", WithSeparators(number), noun, number == 1 ? "" : "s");
}

}  // namespace corvo::telemetry::host
