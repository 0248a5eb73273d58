#include "host/show/run_text.h"

#include <fmt/color.h>
#include <fmt/core.h>

#include "host/show/advice.h"
#include "host/show/json_text.h"
#include "host/show/text_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

/// Sums of rows over the tables that could be counted both times.
struct Sums {
  std::int64_t rows_before = 0;
  std::int64_t rows_after = 0;
  std::int64_t bytes_before = 0;
  std::int64_t bytes_after = 0;

  void Add(const Sums& other) {
    rows_before += other.rows_before;
    rows_after += other.rows_after;
    bytes_before += other.bytes_before;
    bytes_after += other.bytes_after;
  }
};

// A missing table is no row of zeros: nothing is known to be wrong with it, there is just nothing.
std::string RowsCell(const TableCount& count) {
  if (count.rows) {
    return WithSeparators(*count.rows);
  }
  return count.problem.empty() ? "-" : "?";
}

std::string DeletedCell(std::int64_t before, std::int64_t after) {
  return before == after ? "" : WithSeparators(before - after);
}

TableLine TableRow(const TableCount& before, const TableCount* after) {
  const std::string deleted =
      before.rows && after != nullptr && after->rows ? DeletedCell(*before.rows, *after->rows) : "";
  return {{"  " + before.table, RowsCell(before), after == nullptr ? "-" : RowsCell(*after), deleted, "", "", ""}};
}

TableLine SumRow(const std::string& name, const Sums& sums) {
  return {{name, WithSeparators(sums.rows_before), WithSeparators(sums.rows_after),
           DeletedCell(sums.rows_before, sums.rows_after), HumanBytes(sums.bytes_before), HumanBytes(sums.bytes_after),
           sums.bytes_before == sums.bytes_after ? "" : HumanBytes(sums.bytes_before - sums.bytes_after)},
          Tone::kStrong};
}

Sums SumUp(const DatabaseChange& change) {
  Sums sums{.bytes_before = change.before->bytes, .bytes_after = change.after == nullptr ? 0 : change.after->bytes};
  for (std::size_t index = 0; change.after != nullptr && index < change.before->tables.size(); ++index) {
    const auto& before = change.before->tables[index].rows;
    const auto& after = change.after->tables[index].rows;
    if (before && after) {
      sums.rows_before += *before;
      sums.rows_after += *after;
    }
  }
  return sums;
}

void AddDatabase(const DatabaseChange& change, const Sums& sums, std::vector<TableLine>& lines) {
  lines.push_back(SumRow(change.before->name, sums));
  for (std::size_t index = 0; index < change.before->tables.size(); ++index) {
    lines.push_back(
        TableRow(change.before->tables[index], change.after == nullptr ? nullptr : &change.after->tables[index]));
  }
}

std::string PassLines(const RunReport& report) {
  std::string text;
  for (std::size_t pass = 0; report.passes.size() > 1 && pass < report.passes.size(); ++pass) {
    const PassOutcome& outcome = report.passes[pass];
    text += fmt::format("Pass {}: {} deleted in {:.1f} s\n", pass + 1, Counted(outcome.rows_deleted, "row"),
                        outcome.seconds);
  }
  return text;
}

std::string Coloured(const std::string& text, fmt::terminal_color colour, bool use) {
  return use ? fmt::format(fmt::fg(colour) | fmt::emphasis::bold, "{}", text) : text;
}

std::string SuccessLine(const Sums& total, std::size_t databases, double seconds, bool colour) {
  const std::string text = fmt::format("Cleaned {}: {} deleted, {} freed in {:.1f} s",
                                       Counted(static_cast<std::int64_t>(databases), "database"),
                                       Counted(total.rows_before - total.rows_after, "row"),
                                       HumanBytes(total.bytes_before - total.bytes_after), seconds);
  return Coloured(text, fmt::terminal_color::green, colour) + "\n";
}

std::string FailureLines(const PassOutcome& pass, bool colour) {
  const common::Error& failure = pass.result;
  const std::string where = pass.failed_database.empty() ? "" : fmt::format(" in {}", pass.failed_database);
  const std::string text =
      fmt::format("The pass failed{}: {} ({} {})", where, failure.what.empty() ? "no message" : failure.what,
                  CategoryName(failure.category), failure.code);
  return Coloured(Printable(text), fmt::terminal_color::red, colour) + "\n" + Advice(pass.result) + "\n";
}

}  // namespace

std::string RunText(const RunReport& report, bool colour) {
  const bool failed = report.Result().Failed();
  if (report.before.empty() && !failed) {
    return "Nothing to clean: the directory holds none of the catalogue's databases\n";
  }
  std::vector<TableLine> lines = {
      {{"DATABASE / TABLE", "ROWS BEFORE", "AFTER", "DELETED", "SIZE BEFORE", "AFTER", "FREED"}, Tone::kFaint}};
  Sums total;
  for (const DatabaseChange& change : Changes(report)) {
    const Sums sums = SumUp(change);
    AddDatabase(change, sums, lines);
    total.Add(sums);
  }
  lines.push_back({{}, Tone::kFaint});
  lines.push_back(SumRow("Total", total));
  const std::vector<Align> alignments = {Align::kLeft,  Align::kRight, Align::kRight, Align::kRight,
                                         Align::kRight, Align::kRight, Align::kRight};
  return FormatTable(lines, alignments, colour) + "\n" + PassLines(report) +
         (failed ? FailureLines(report.passes.back(), colour)
                 : SuccessLine(total, report.before.size(), report.Seconds(), colour));
}

}  // namespace corvo::telemetry::host
