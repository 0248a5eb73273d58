#include "host/show/paragraphs.h"

#include <fmt/core.h>

#include <sstream>

#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {

std::string Indented(const std::string& text, std::size_t margin, std::size_t width) {
  const std::string indent(margin, ' ');
  std::istringstream words(text);
  std::string folded;
  std::string line;
  for (std::string word; std::getline(words, word, ' ');) {
    if (!line.empty() && margin + TextWidth(line) + 1 + TextWidth(word) > width) {
      folded += indent + line + "\n";
      line.clear();
    }
    line += (line.empty() ? "" : " ") + word;
  }
  return folded + indent + line + "\n";
}

void Paragraphs::Add(const std::string& heading, const std::vector<std::string>& lines) {
  constexpr std::size_t kMargin = 13;
  std::string shown = InTone(fmt::format("{:<{}}", heading, kMargin - 1), Tone::kStrong, colour_) + " ";
  for (const std::string& line : lines) {
    text_ += shown + Indented(Printable(line), kMargin, width_).substr(kMargin);
    shown.assign(kMargin, ' ');
  }
}

}  // namespace corvo::telemetry::host
