#include "host/show/paragraphs.h"

#include <fmt/core.h>

#include "host/show/fold.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {

void Paragraphs::Add(const std::string& heading, const std::vector<std::string>& lines) {
  constexpr std::size_t kMargin = 13;
  std::string shown = InTone(fmt::format("{:<{}}", heading, kMargin - 1), Tone::kStrong, colour_) + " ";
  for (const std::string& line : lines) {
    text_ += shown + Indented(Printable(line), kMargin, width_).substr(kMargin);
    shown.assign(kMargin, ' ');
  }
}

}  // namespace corvo::telemetry::host
