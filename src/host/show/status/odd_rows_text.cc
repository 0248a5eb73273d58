#include "host/show/status/odd_rows_text.h"

#include <fmt/core.h>

#include <array>
#include <string_view>

#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

struct Kind {
  OddRows TableState::*rows;
  const char* name;
};

constexpr std::array<Kind, 4> kKinds = {{
    {&TableState::no_time, "No time, never expires"},
    {&TableState::unreadable, "Unreadable time, never expires"},
    {&TableState::future, "Time in the future, expires late"},
    {&TableState::ancient, "Number or bare time, counts as ancient"},
}};

/// The text with its end left out where it is longer than `width` characters.
std::string Cut(const std::string& text, std::size_t width) {
  if (TextWidth(text) <= width) {
    return text;
  }
  constexpr std::string_view kEnd = "...";
  std::string cut = text;
  while (!cut.empty() && TextWidth(cut) + kEnd.size() > width) {
    // The whole character: its first byte is the one that counts.
    while (!cut.empty() && TextWidth(std::string_view(cut).substr(cut.size() - 1)) == 0) {
      cut.pop_back();
    }
    cut.pop_back();
  }
  return cut.append(kEnd);
}

std::string SampleText(const TableState& table, const OddRows& odd) {
  const std::string row = odd.rowid == 0 ? "" : fmt::format(" row {}", odd.rowid);
  return fmt::format("{}{}: {}", table.contract.table, row, Printable(odd.sample));
}

/// All odd rows of one kind.
std::string Line(const Kind& kind, const std::vector<const TableState*>& tables, std::size_t width) {
  std::int64_t rows = 0;
  std::int64_t count = 0;
  const TableState* first = nullptr;
  for (const TableState* table : tables) {
    const OddRows& odd = table->*kind.rows;
    if (odd.rows > 0) {
      rows += odd.rows;
      ++count;
      first = first == nullptr ? table : first;
    }
  }
  if (first == nullptr) {
    return "";
  }
  const std::string where = count == 1 ? "" : fmt::format(" in {} tables", count);
  return Cut(fmt::format("{}: {}{}; {}", kind.name, Counted(rows, "row"), where, SampleText(*first, first->*kind.rows)),
             width);
}

}  // namespace

std::vector<std::string> OddRowLines(const std::vector<const TableState*>& tables, std::size_t width) {
  std::vector<std::string> lines;
  for (const Kind& kind : kKinds) {
    if (std::string line = Line(kind, tables, width); !line.empty()) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

std::vector<std::string> OddRowLinesByTable(const std::vector<const TableState*>& tables, std::size_t width) {
  std::vector<std::string> lines;
  for (const TableState* table : tables) {
    for (std::string& line : OddRowLines({table}, width)) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

}  // namespace corvo::telemetry::host
