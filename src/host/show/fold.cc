#include "host/show/fold.h"

#include <sstream>

#include "host/show/text_table.h"

namespace corvo::telemetry::host {

std::vector<std::string> Folded(const std::string& text, std::size_t width) {
  std::vector<std::string> lines;
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) {
    if (!line.empty() && TextWidth(line) + 1 + TextWidth(word) > width) {
      lines.push_back(line);
      line = " ";
    }
    line += (line.empty() ? "" : " ") + word;
  }
  lines.push_back(line);
  return lines;
}

}  // namespace corvo::telemetry::host
