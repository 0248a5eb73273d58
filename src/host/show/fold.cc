#include "host/show/fold.h"

#include <algorithm>
#include <sstream>

#include "host/show/text_table.h"

namespace corvo::telemetry::host {

std::vector<std::string> Folded(const std::string& text, std::size_t width, std::size_t hang) {
  std::vector<std::string> lines;
  std::string line;
  bool empty = true;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find_first_of(" \n", begin), text.size());
    const std::string word = text.substr(begin, end - begin);
    if (!empty && TextWidth(line) + 1 + TextWidth(word) > width) {
      lines.push_back(line);
      line.assign(hang, ' ');
      empty = true;
    }
    line += (empty ? "" : " ") + word;
    empty = empty && word.empty();
    begin = end + 1;
  }
  lines.push_back(line);
  return lines;
}

std::string Indented(const std::string& text, std::size_t margin, std::size_t width) {
  std::string indented;
  for (const std::string& line : Folded(text, width - std::min(width, margin))) {
    indented += std::string(margin, ' ') + line + "\n";
  }
  return indented;
}

std::string FoldedLines(const std::string& text, std::size_t width) {
  std::istringstream lines(text);
  std::string folded;
  for (std::string line; std::getline(lines, line);) {
    folded += TextWidth(line) <= width ? line + "\n" : Indented(line, 0, width);
  }
  return folded;
}

}  // namespace corvo::telemetry::host
