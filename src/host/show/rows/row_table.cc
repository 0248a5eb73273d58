#include "host/show/rows/row_table.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>

#include "host/show/rows/row_formats.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 20;
/// How wide a column may be while all are shown, from generous to tight; the last one leaves a time whole.
constexpr std::array<std::size_t, 4> kCaps = {200, 60, 40, 28};

/// The length in bytes of the character that begins with this byte, in valid UTF-8.
std::size_t LengthOf(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte < 0x80 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

/// East Asian scripts and pictures, which terminals show in two columns.
bool IsWide(char32_t code) {
  return (code >= 0x1100 && code <= 0x115f) || (code >= 0x2e80 && code <= 0xa4cf) ||
         (code >= 0xac00 && code <= 0xd7a3) || (code >= 0xf900 && code <= 0xfaff) ||
         (code >= 0xfe30 && code <= 0xfe6f) || (code >= 0xff00 && code <= 0xff60) ||
         (code >= 0xffe0 && code <= 0xffe6) || (code >= 0x1f300 && code <= 0x1faff) || (code >= 0x20000);
}

std::size_t WidthOf(std::string_view character) {
  constexpr std::array<unsigned char, 5> kPayload = {0, 0x7f, 0x1f, 0x0f, 0x07};
  auto code = static_cast<char32_t>(static_cast<unsigned char>(character.front()) & kPayload.at(character.size()));
  for (const char byte : character.substr(1)) {
    code = (code << 6) | (static_cast<unsigned char>(byte) & 0x3f);
  }
  const bool combining = (code >= 0x300 && code <= 0x36f) || code == 0x200b || code == 0x200d;
  return combining ? 0 : IsWide(code) ? 2 : 1;
}

/// Calls `take` with each character and its width until it says no.
template <class Take>
void ForEachCharacter(const std::string& text, const Take& take) {
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view character = std::string_view(text).substr(at, LengthOf(text[at]));
    if (!take(character, WidthOf(character))) {
      return;
    }
    at += character.size();
  }
}

std::size_t Sum(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

}  // namespace

std::size_t DisplayWidth(const std::string& text) {
  std::size_t width = 0;
  ForEachCharacter(text, [&width](std::string_view /*character*/, std::size_t columns) {
    width += columns;
    return true;
  });
  return width;
}

std::string CutToWidth(const std::string& text, std::size_t width, const std::string& cut) {
  std::string kept;
  std::size_t used = 0;
  if (DisplayWidth(text) <= width) {
    return text;
  }
  ForEachCharacter(text, [&](std::string_view character, std::size_t columns) {
    if (used + columns + DisplayWidth(cut) > width) {
      return false;
    }
    used += columns;
    kept += character;
    return true;
  });
  return kept + cut;
}

RowTable::RowTable(const std::vector<std::string>& columns, int width, bool unicode)
    : width_(std::max(static_cast<std::size_t>(std::max(width, 0)), kNarrowest)), cut_(unicode ? "…" : "...") {
  std::vector<std::string>& head = lines_.emplace_back();
  for (const std::string& name : columns) {
    head.push_back(CutToWidth(Printable(name), width_, cut_));
    columns_.push_back({.width = DisplayWidth(head.back())});
  }
}

void RowTable::Add(const Cells& row) {
  std::vector<std::string>& line = lines_.emplace_back();
  for (std::size_t at = 0; at < row.size(); ++at) {
    line.push_back(CutToWidth(Printable(CellText(row[at])), width_, cut_));
    Column& column = columns_.at(at);
    column.width = std::max(column.width, DisplayWidth(line.back()));
    column.numbers = column.numbers && row[at].type != Cell::Type::kText && row[at].type != Cell::Type::kBlob;
  }
}

/// Of the columns that are shown: all of them, cut as little as it takes, else as many as have a place.
std::vector<std::size_t> RowTable::Widths() const {
  std::vector<std::size_t> widths;
  for (const std::size_t cap : kCaps) {
    widths.clear();
    for (const Column& column : columns_) {
      widths.push_back(std::min(column.width, cap));
    }
    if (Sum(widths) <= width_) {
      break;
    }
  }
  while (widths.size() > 1 && Sum(widths) > width_) {
    widths.pop_back();
  }
  widths.front() = std::min(widths.front(), width_);
  // What is left over goes to those that were cut, the first ones first.
  for (std::size_t at = 0; at < widths.size(); ++at) {
    widths[at] = std::min(columns_[at].width, widths[at] + width_ - Sum(widths));
  }
  return widths;
}

std::string RowTable::Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const {
  std::string line;
  for (std::size_t at = 0; at < widths.size(); ++at) {
    const std::string text = CutToWidth(cells[at], widths[at], cut_);
    const std::string blanks(widths[at] - DisplayWidth(text), ' ');
    line += std::string(at == 0 ? 0 : kGap, ' ') + (columns_[at].numbers ? blanks + text : text + blanks);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

std::string RowTable::LeftOut(std::size_t shown) const {
  if (shown == columns_.size()) {
    return "";
  }
  const std::vector<std::string> names(lines_.front().begin() + static_cast<std::ptrdiff_t>(shown),
                                       lines_.front().end());
  const std::string note = fmt::format("{} left out: {}", Counted(static_cast<std::int64_t>(names.size()), "column"),
                                       fmt::join(names, ", "));
  return "\n" + CutToWidth(note, width_, cut_) + "\n--format jsonl or csv shows all.\n";
}

std::string RowTable::Text(bool colour) const {
  const std::vector<std::size_t> widths = Widths();
  std::string text = InTone(Line(lines_.front(), widths), Tone::kStrong, colour) + "\n";
  for (auto line = lines_.begin() + 1; line != lines_.end(); ++line) {
    text += Line(*line, widths) + "\n";
  }
  return text + LeftOut(widths.size());
}

}  // namespace corvo::telemetry::host
