#include "host/show/run_text.h"

#include <fmt/color.h>
#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "common/text.h"
#include "host/show/advice.h"
#include "host/show/json_text.h"
#include "host/show/text_table.h"
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
};

std::string NumberOrNothing(std::int64_t number) { return number == 0 ? "" : WithSeparators(number); }

std::string Change(std::int64_t before, std::int64_t after) {
  if (before == after) {
    return "";
  }
  return before > after ? HumanBytes(before - after) : "grew " + HumanBytes(after - before);
}

/// A column of the table. Those that say nothing in any line are left out.
struct Column {
  const char* head;
  std::function<std::string(const Row&)> cell;
  bool always = false;
};

const std::vector<Column>& Columns() {
  static const std::vector<Column> columns = {
      {"DATABASE / TABLE", [](const Row& row) { return row.name; }, true},
      {"ROWS BEFORE", [](const Row& row) { return row.before; }, true},
      {"EXPIRED", [](const Row& row) { return NumberOrNothing(row.deleted.expired); }},
      {"ROW LIMIT", [](const Row& row) { return NumberOrNothing(row.deleted.row_limit); }},
      {"SIZE LIMIT", [](const Row& row) { return NumberOrNothing(row.deleted.size_limit); }},
      {"BY OTHERS",
       [](const Row& row) { return row.added > 0 ? "+" + WithSeparators(row.added) : NumberOrNothing(row.added); }},
      {"ROWS AFTER", [](const Row& row) { return row.after; }, true},
      {"LOST", [](const Row& row) { return row.lost; }},
      {"SIZE BEFORE", [](const Row& row) { return row.bytes_before ? HumanBytes(*row.bytes_before) : ""; }, true},
      {"SIZE AFTER", [](const Row& row) { return row.bytes_after ? HumanBytes(*row.bytes_after) : ""; }, true},
      {"FREED",
       [](const Row& row) {
         return row.bytes_before && row.bytes_after ? Change(*row.bytes_before, *row.bytes_after) : "";
       }},
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
          .lost = table.LostMost() ? ShareLost(*table.rows_before, table.deleted.Sum()) : ""};
}

/// Sums over the tables that could be counted both times.
struct Sums {
  std::int64_t before = 0;
  std::int64_t after = 0;
  bool known = false;
  Deleted deleted = {};
  std::int64_t added = 0;
  std::int64_t bytes_before = 0;
  std::int64_t bytes_after = 0;

  void Add(const Sums& other) {
    before += other.before;
    after += other.after;
    known = known || other.known;
    deleted.Add(other.deleted);
    added += other.added;
    bytes_before += other.bytes_before;
    bytes_after += other.bytes_after;
  }
};

Sums SumUp(const DatabaseReport& database) {
  Sums sums{.bytes_before = database.bytes_before, .bytes_after = database.bytes_after};
  for (const TableReport& table : database.tables) {
    sums.deleted.Add(table.deleted);
    if (table.rows_before && table.rows_after) {
      sums.known = true;
      sums.before += *table.rows_before;
      sums.after += *table.rows_after;
      sums.added += table.AddedByOthers().value_or(0);
    }
  }
  return sums;
}

Row RowOf(const std::string& name, const Sums& sums) {
  return {.name = name,
          .tone = Tone::kStrong,
          .before = sums.known ? WithSeparators(sums.before) : "?",
          .after = sums.known ? WithSeparators(sums.after) : "?",
          .deleted = sums.deleted,
          .added = sums.added,
          .bytes_before = sums.bytes_before,
          .bytes_after = sums.bytes_after};
}

std::string TableText(const RunReport& report, const Sums& total, bool colour) {
  std::vector<Row> rows;
  for (const DatabaseReport& database : report.databases) {
    rows.push_back(RowOf(database.name + (database.problem ? " (not cleaned)" : ""), SumUp(database)));
    for (const TableReport& table : database.tables) {
      rows.push_back(RowOf(table));
    }
  }
  rows.push_back(RowOf("Total", total));

  std::vector<TableLine> lines = {{{}, Tone::kFaint}};
  for (const Row& row : rows) {
    lines.push_back({{}, row.tone});
  }
  std::vector<Align> alignments;
  for (const Column& column : Columns()) {
    if (column.always ||
        std::any_of(rows.begin(), rows.end(), [&](const Row& row) { return !column.cell(row).empty(); })) {
      alignments.push_back(alignments.empty() ? Align::kLeft : Align::kRight);
      lines[0].cells.emplace_back(column.head);
      for (std::size_t row = 0; row < rows.size(); ++row) {
        lines[row + 1].cells.push_back(column.cell(rows[row]));
      }
    }
  }
  lines.insert(lines.end() - 1, {{}, Tone::kFaint});
  return FormatTable(lines, alignments, colour) + "\n";
}

std::string PassLines(const RunReport& report) {
  std::string text;
  for (std::size_t pass = 0; report.passes.size() > 1 && pass < report.passes.size(); ++pass) {
    const PassOutcome& outcome = report.passes[pass];
    text += fmt::format("Pass {}{}: {} deleted in {:.1f} s\n", pass + 1,
                        outcome.database.empty() ? "" : " over " + outcome.database,
                        Counted(outcome.rows_deleted, "row"), outcome.seconds);
  }
  return text;
}

std::string Coloured(const std::string& text, fmt::terminal_color colour, bool use) {
  return use ? fmt::format(fmt::fg(colour) | fmt::emphasis::bold, "{}", text) : text;
}

/// What is to be known of tables: those that are missing, and those that lost most of their rows.
std::string TableNotes(const RunReport& report) {
  std::vector<std::string> missing;
  bool lost_most = false;
  for (const DatabaseReport& database : report.databases) {
    for (const TableReport& table : database.tables) {
      lost_most = lost_most || table.LostMost();
      if (table.missing) {
        missing.push_back(table.table);
      }
    }
  }
  return (missing.empty() ? "" : fmt::format("Not there, which is no failure: {}\n", fmt::join(missing, ", "))) +
         (lost_most ? "LOST: the share of its rows that a table lost, where it is more than half\n" : "");
}

std::string PassFailure(const PassOutcome& pass, bool colour) {
  const std::string where = pass.failure            ? fmt::format(" in {}", pass.failure->database)
                            : pass.database.empty() ? ""
                                                    : " over " + pass.database;
  std::string text =
      fmt::format("The pass failed{}: {} ({} {})", where, pass.result.what.empty() ? "no message" : pass.result.what,
                  CategoryName(pass.result.category), pass.result.code);
  if (pass.failure) {
    text += "; the statement was " + pass.failure->sql;
  }
  return Coloured(Printable(text), fmt::terminal_color::red, colour);
}

/// Each advice once, with the databases that it is for.
std::vector<std::string> AdviceLines(const RunReport& report) {
  std::vector<std::pair<std::string, std::vector<std::string>>> advices;
  for (const DatabaseReport& database : report.databases) {
    const std::string advice = database.problem ? Advice(*database.problem) : "";
    if (advice.empty()) {
      continue;
    }
    auto found = std::find_if(advices.begin(), advices.end(), [&](const auto& each) { return each.first == advice; });
    if (found == advices.end()) {
      found = advices.insert(advices.end(), {advice, {}});
    }
    found->second.push_back(database.name);
  }
  std::vector<std::string> lines;
  lines.reserve(advices.size());
  for (const auto& [advice, names] : advices) {
    lines.push_back(fmt::format("{}: {}", fmt::join(names, ", "), advice));
  }
  return lines;
}

/// What failed, and what to do.
std::vector<std::string> FailureLines(const RunReport& report, bool colour) {
  std::vector<std::string> lines;
  for (const PassOutcome& pass : report.passes) {
    if (pass.result.Failed() && report.signal == 0) {
      lines.push_back(PassFailure(pass, colour));
    }
  }
  const std::vector<std::string> advice = AdviceLines(report);
  if (advice.empty() && !lines.empty()) {
    lines.push_back(Advice(report.Result()));
  }
  lines.insert(lines.end(), advice.begin(), advice.end());
  return lines;
}

std::string NotCleaned(const RunReport& report) {
  std::vector<std::string> parts;
  for (const DatabaseReport& database : report.databases) {
    if (database.problem) {
      parts.push_back(fmt::format("{} ({})", database.name, Printable(database.problem->reason)));
    }
  }
  return fmt::format("{}", fmt::join(parts, ", "));
}

std::string Figures(const RunReport& report, const Sums& total) {
  const std::string change = Change(total.bytes_before, total.bytes_after);
  return fmt::format("{} deleted, {} in {:.1f} s", Counted(total.deleted.Sum(), "row"),
                     change.starts_with("grew") ? change : (change.empty() ? "0 B" : change) + " freed",
                     report.Seconds());
}

bool AllIsWell(const RunReport& report) { return report.signal == 0 && !report.Result().Failed(); }

/// How the run went, in one line.
std::string Outcome(const RunReport& report) {
  const auto all = static_cast<std::int64_t>(report.databases.size());
  if (AllIsWell(report)) {
    return "Cleaned " + Counted(all, "database");
  }
  const std::string rest = NotCleaned(report);
  return fmt::format("{} {} of {}{}", report.signal != 0 ? "Interrupted: cleaned" : "Cleaned", report.Cleaned(),
                     Counted(all, "database"), rest.empty() ? "" : "; not cleaned: " + rest);
}

}  // namespace

std::string RunText(const RunReport& report, bool colour) {
  if (report.databases.empty() && report.signal == 0) {
    return fmt::format("Nothing to clean: {} ({}) holds none of the {}\n", Printable(common::Utf8(report.directory)),
                       report.directory_source,
                       report.narrowed ? "databases that were named" : "catalogue's databases");
  }
  Sums total;
  for (const DatabaseReport& database : report.databases) {
    total.Add(SumUp(database));
  }
  std::string failures;
  for (const std::string& line : FailureLines(report, colour)) {
    failures += line + "\n";
  }
  const std::string table = report.databases.empty() ? "" : TableText(report, total, colour);
  return fmt::format("{} ({})\n\n", Printable(common::Utf8(report.directory)), report.directory_source) + table +
         PassLines(report) + TableNotes(report) + failures +
         (AllIsWell(report)
              ? Coloured(Outcome(report) + ": " + Figures(report, total), fmt::terminal_color::green, colour)
              : Coloured(Outcome(report), fmt::terminal_color::red, colour) + "\n" + Figures(report, total)) +
         "\n";
}

std::vector<std::string> Failures(const RunReport& report) {
  std::vector<std::string> lines = FailureLines(report, false);
  lines.push_back(Outcome(report));
  return lines;
}

}  // namespace corvo::telemetry::host
