#include "host/show/bar.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvo::telemetry::host {
namespace {

/// How many of `steps` the share fills.
std::size_t Filled(double share, std::size_t steps) {
  if (share <= 0 || share >= 1) {
    return share > 0 ? steps : 0;
  }
  const auto nearest = static_cast<std::size_t>(std::lround(share * static_cast<double>(steps)));
  return std::clamp<std::size_t>(nearest, std::min<std::size_t>(1, steps - 1), steps - 1);
}

std::string Repeated(const char* character, std::size_t times) {
  std::string text;
  for (std::size_t index = 0; index < times; ++index) {
    text += character;
  }
  return text;
}

}  // namespace

std::string Bar(double share, std::size_t width, bool blocks) {
  if (share > 1) {
    return Repeated(blocks ? "\u2588" : "#", width - 1) + ">";
  }
  if (!blocks) {
    const std::size_t filled = Filled(share, width);
    return std::string(filled, '#') + std::string(width - filled, '.');
  }
  constexpr std::array kParts = {"", "\u258f", "\u258e", "\u258d", "\u258c", "\u258b", "\u258a", "\u2589"};
  const std::size_t eighths = Filled(share, width * kParts.size());
  const std::size_t part = eighths % kParts.size();
  const std::size_t whole = eighths / kParts.size();
  return Repeated("\u2588", whole) + kParts.at(part) + Repeated("\u2591", width - whole - (part == 0 ? 0 : 1));
}

}  // namespace corvo::telemetry::host
