#include "host/show/fitting_table.h"

#include <algorithm>

#include "host/show/bar.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kShortestBar = 4;
constexpr std::size_t kLongestBar = 20;

using Columns = std::vector<FittingColumn>;

bool SaysSomething(const FittingColumn& column) {
  return std::any_of(column.texts.begin(), column.texts.end(), [](const auto& text) { return !text.empty(); }) ||
         std::any_of(column.shares.begin(), column.shares.end(), [](const auto& share) { return share.has_value(); });
}

std::size_t LeastWidth(const FittingColumn& column) {
  std::size_t width = std::max(TextWidth(column.head), column.bars ? kShortestBar : 0);
  for (const std::string& text : column.texts) {
    width = std::max(width, TextWidth(text));
  }
  return width;
}

std::size_t LeastWidth(const Columns& columns) {
  std::size_t width = 0;
  for (const FittingColumn& column : columns) {
    width += LeastWidth(column) + (width == 0 ? 0 : kGap);
  }
  return width;
}

Columns ThoseThatFit(Columns columns, std::size_t width) {
  std::erase_if(columns, [](const FittingColumn& column) { return !SaysSomething(column); });
  while (LeastWidth(columns) > width) {
    const auto least_needed = std::max_element(
        columns.begin(), columns.end(), [](const auto& one, const auto& other) { return one.rank < other.rank; });
    if (least_needed->rank == 0) {
      break;
    }
    columns.erase(least_needed);
  }
  return columns;
}

std::size_t BarWidth(const Columns& columns, std::size_t width) {
  std::size_t bars = 0;
  std::size_t others = 0;
  for (const FittingColumn& column : columns) {
    bars += column.bars ? 1 : 0;
    others += (column.bars ? 0 : LeastWidth(column)) + kGap;
  }
  const std::size_t room = width + kGap > others ? width + kGap - others : 0;
  return bars == 0 ? 0 : std::clamp(room / bars, kShortestBar, kLongestBar);
}

}  // namespace

std::string FormatFitting(const Columns& columns, const std::vector<Tone>& tones, const Display& display) {
  const Columns fitting = ThoseThatFit(columns, display.width);
  const std::size_t bar = BarWidth(fitting, display.width);
  std::vector<TableLine> lines = {{{}, Tone::kStrong}};
  for (const Tone tone : tones) {
    lines.push_back({{}, tone});
  }
  std::vector<Align> alignments;
  for (const FittingColumn& column : fitting) {
    alignments.push_back(column.align);
    lines[0].cells.push_back(column.head);
    for (std::size_t line = 0; line < tones.size(); ++line) {
      const std::optional<double> share = column.bars ? column.shares[line] : std::nullopt;
      lines[line + 1].cells.push_back(column.bars ? (share ? Bar(*share, bar, display.blocks) : "")
                                                  : column.texts[line]);
    }
  }
  return FormatTable(lines, alignments, display.colour);
}

}  // namespace corvo::telemetry::host
