#include "host/show/text_table.h"

#include <fmt/color.h>
#include <fmt/core.h>

#include <algorithm>
#include <numeric>

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kGap = 2;

std::vector<std::size_t> ColumnWidths(const std::vector<TableLine>& lines, std::size_t columns) {
  std::vector<std::size_t> widths(columns, 0);
  for (const TableLine& line : lines) {
    for (std::size_t column = 0; column < line.cells.size(); ++column) {
      widths.at(column) = std::max(widths.at(column), TextWidth(line.cells[column]));
    }
  }
  return widths;
}

std::string FormatLine(const TableLine& line, const std::vector<std::size_t>& widths,
                       const std::vector<Align>& alignments) {
  std::string text;
  for (std::size_t column = 0; column < line.cells.size(); ++column) {
    const std::string& cell = line.cells[column];
    const std::string fill(widths[column] - TextWidth(cell), ' ');
    text += std::string(column == 0 ? 0 : kGap, ' ') + (alignments[column] == Align::kLeft ? cell + fill : fill + cell);
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

std::size_t TextWidth(std::string_view text) {
  const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U; };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

std::string InTone(const std::string& text, Tone tone, bool colour) {
  if (!colour || tone == Tone::kPlain) {
    return text;
  }
  if (tone == Tone::kWarning) {
    return fmt::format(fmt::fg(fmt::terminal_color::yellow), "{}", text);
  }
  return fmt::format(tone == Tone::kStrong ? fmt::emphasis::bold : fmt::emphasis::faint, "{}", text);
}

std::string FormatTable(const std::vector<TableLine>& lines, const std::vector<Align>& alignments, bool colour) {
  const std::vector<std::size_t> widths = ColumnWidths(lines, alignments.size());
  const std::size_t width = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
  std::string text;
  for (const TableLine& line : lines) {
    const std::string content = line.cells.empty() ? std::string(width, '-') : FormatLine(line, widths, alignments);
    text += InTone(content, line.tone, colour) + "\n";
  }
  return text;
}

}  // namespace corvo::telemetry::host
