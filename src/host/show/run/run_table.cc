#include "host/show/run/run_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/show/text_table.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

/// One line of the table: a table, a database, or all of them. What is not known is not shown.
struct Row {
  std::string name;
  Tone tone = Tone::kPlain;
  std::string before = {};
  std::string after = {};
  Deleted deleted = {};
  std::int64_t added = 0;
  std::string lost = {};
  std::optional<std::int64_t> bytes_before = {};
  std::optional<std::int64_t> bytes_after = {};
  std::string oldest = {};
};

constexpr std::size_t kDayLength = 10;  // 2024-05-01

std::string NumberOrNothing(std::int64_t number) { return number == 0 ? "" : WithSeparators(number); }

/// A column of the table. Those that say nothing in any line are left out.
struct Column {
  const char* head;
  const char* short_head;
  std::function<std::string(const Row&)> cell;
  bool always = false;
  bool second = false;  ///< stands in the second table where there are two
  int rank = 0;         ///< the columns with the highest leave first when the table is too wide; those with 0 stay
};

const std::vector<Column>& Columns() {
  static const std::vector<Column> columns = {
      {"DATABASE / TABLE", "DATABASE / TABLE", [](const Row& row) { return row.name; }, true},
      {"ROWS BEFORE", "ROWS", [](const Row& row) { return row.before; }, true, false, 1},
      {"EXPIRED", "EXPIRED", [](const Row& row) { return NumberOrNothing(row.deleted.expired); }, false, false, 3},
      {"ROW LIMIT", "ROW LIM.", [](const Row& row) { return NumberOrNothing(row.deleted.row_limit); }, false, false, 4},
      {"SIZE LIMIT", "SIZE LIM.", [](const Row& row) { return NumberOrNothing(row.deleted.size_limit); }, false, false,
       5},
      {"BY OTHERS", "OTHERS",
       [](const Row& row) { return row.added > 0 ? "+" + WithSeparators(row.added) : NumberOrNothing(row.added); },
       false, false, 6},
      {"ROWS AFTER", "LEFT", [](const Row& row) { return row.after; }, true},
      {"LOST", "LOST", [](const Row& row) { return row.lost; }, false, false, 2},
      {"SIZE BEFORE", "SIZE BEFORE",
       [](const Row& row) { return row.bytes_before ? HumanBytes(*row.bytes_before) : ""; }, true, true, 2},
      {"SIZE AFTER", "SIZE AFTER", [](const Row& row) { return row.bytes_after ? HumanBytes(*row.bytes_after) : ""; },
       true, true},
      {"OLDEST LEFT", "OLDEST LEFT", [](const Row& row) { return row.oldest; }, false, true, 3},
      {"FREED", "FREED",
       [](const Row& row) {
         return row.bytes_before && row.bytes_after ? Change(*row.bytes_before, *row.bytes_after) : "";
       },
       false, true, 1},
  };
  return columns;
}

// A missing table is no row of zeros: nothing is known to be wrong with it, there is just nothing.
std::string Count(const TableReport& table, const std::optional<std::int64_t>& rows) {
  if (rows) {
    return WithSeparators(*rows);
  }
  return table.missing ? "-" : "?";
}

std::string ShareLost(std::int64_t before, std::int64_t deleted) {
  return fmt::format("{:.0f} %", 100.0 * static_cast<double>(std::min(before, deleted)) / static_cast<double>(before));
}

Row RowOf(const TableReport& table) {
  return {.name = "  " + table.table,
          .tone = table.LostMost() ? Tone::kWarning : Tone::kPlain,
          .before = Count(table, table.rows_before),
          .after = Count(table, table.rows_after),
          .deleted = table.deleted,
          .added = table.AddedByOthers().value_or(0),
          .lost = table.LostMost() ? ShareLost(*table.rows_before, table.deleted.Sum()) : "",
          .oldest = table.oldest_left ? TimeText(*table.oldest_left).substr(0, kDayLength) : ""};
}

Sums SumUp(const DatabaseReport& database) {
  Sums sums{.bytes_before = database.bytes_before, .bytes_after = database.bytes_after};
  for (const TableReport& table : database.tables) {
    sums.deleted.Add(table.deleted);
    if (table.rows_before) {
      sums.before_known = true;
      sums.after_known = sums.after_known && table.rows_after;
      sums.before += *table.rows_before;
      sums.after += table.rows_after.value_or(0);
      sums.added += table.AddedByOthers().value_or(0);
    }
  }
  return sums;
}

Row RowOf(const std::string& name, const Sums& sums) {
  return {.name = name,
          .tone = Tone::kStrong,
          .before = sums.before_known ? WithSeparators(sums.before) : "?",
          .after = sums.before_known && sums.after_known ? WithSeparators(sums.after) : "?",
          .deleted = sums.deleted,
          .added = sums.added,
          .bytes_before = sums.bytes_before,
          .bytes_after = sums.bytes_after};
}

std::vector<Row> RowsOf(const RunReport& report) {
  std::vector<Row> rows;
  for (const DatabaseReport& database : report.databases) {
    rows.push_back(RowOf(database.name + (database.problem ? " (not cleaned)" : ""), SumUp(database)));
    for (const TableReport& table : database.tables) {
      rows.push_back(RowOf(table));
    }
  }
  rows.push_back(RowOf("Total", SumUp(report)));
  return rows;
}

/// A table of the columns that are chosen and say something; the last row stands below a rule.
template <class Chosen>
std::string Format(const std::vector<Row>& rows, bool short_heads, bool colour, const Chosen& chosen) {
  std::vector<TableLine> lines = {{{}, Tone::kFaint}};
  for (const Row& row : rows) {
    lines.push_back({{}, row.tone});
  }
  std::vector<Align> alignments;
  for (const Column& column : Columns()) {
    const bool speaks = column.always || std::any_of(rows.begin(), rows.end(),
                                                     [&](const Row& row) { return !column.cell(row).empty(); });
    if (speaks && chosen(column)) {
      alignments.push_back(alignments.empty() ? Align::kLeft : Align::kRight);
      lines[0].cells.emplace_back(short_heads ? column.short_head : column.head);
      for (std::size_t row = 0; row < rows.size(); ++row) {
        lines[row + 1].cells.push_back(column.cell(rows[row]));
      }
    }
  }
  lines.insert(lines.end() - 1, {{}, Tone::kFaint});
  return FormatTable(lines, alignments, colour) + "\n";
}

/// Of the lines of a table without colours; its names are of ASCII.
std::size_t Widest(const std::string& table) {
  std::size_t widest = 0;
  for (std::size_t begin = 0; begin < table.size();) {
    const std::size_t end = std::min(table.find('\n', begin), table.size());
    widest = std::max(widest, end - begin);
    begin = end + 1;
  }
  return widest;
}

bool IsName(const Column& column) { return &column == &Columns().front(); }

/// The lines of which the columns say more than the name.
template <class Chosen>
std::vector<Row> WithSomething(std::vector<Row> rows, const Chosen& chosen) {
  std::erase_if(rows, [&chosen](const Row& row) {
    return std::none_of(Columns().begin(), Columns().end(), [&](const Column& column) {
      return !IsName(column) && chosen(column) && !column.cell(row).empty();
    });
  });
  return rows;
}

/// As many of the chosen columns as fit, those that are needed least left out.
template <class Chosen>
std::string FormatFitting(const std::vector<Row>& rows, std::size_t width, bool colour, const Chosen& chosen) {
  int highest = 0;
  for (const Column& column : Columns()) {
    highest = std::max(highest, column.rank);
  }
  const auto kept = [&](const Column& column) { return chosen(column) && column.rank <= highest; };
  while (highest > 0 && Widest(Format(WithSomething(rows, kept), true, false, kept)) > width) {
    --highest;
  }
  return Format(WithSomething(rows, kept), true, colour, kept);
}

}  // namespace

void Sums::Add(const Sums& other) {
  before += other.before;
  after += other.after;
  before_known = before_known || other.before_known;
  after_known = after_known && other.after_known;
  deleted.Add(other.deleted);
  added += other.added;
  bytes_before += other.bytes_before;
  bytes_after += other.bytes_after;
}

Sums SumUp(const RunReport& report) {
  Sums total;
  for (const DatabaseReport& database : report.databases) {
    total.Add(SumUp(database));
  }
  return total;
}

std::string Change(std::int64_t before, std::int64_t after) {
  if (before == after) {
    return "";
  }
  return before > after ? HumanBytes(before - after) : "grew " + HumanBytes(after - before);
}

std::string RunTable(const RunReport& report, bool colour, int width) {
  const std::vector<Row> rows = RowsOf(report);
  const std::string all = Format(rows, false, false, [](const Column&) { return true; });
  if (width == 0 || Widest(all) <= static_cast<std::size_t>(width)) {
    return colour ? Format(rows, false, true, [](const Column&) { return true; }) : all;
  }
  const auto columns = static_cast<std::size_t>(width);
  return FormatFitting(rows, columns, colour, [](const Column& column) { return !column.second; }) +
         FormatFitting(rows, columns, colour, [](const Column& column) { return column.second || IsName(column); });
}

}  // namespace corvo::telemetry::host
