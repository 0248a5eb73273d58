#include "host/show/run/run_text.h"

#include <fmt/color.h>
#include <fmt/format.h>

#include <algorithm>

#include "common/text.h"
#include "host/show/advice.h"
#include "host/show/fold.h"
#include "host/show/json_text.h"
#include "host/show/run/run_table.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

/// The text as a line, or as several where it is wider than the terminal.
std::string Line(const std::string& text, int width) {
  return width == 0 ? text + "\n" : Indented(text, 0, static_cast<std::size_t>(std::max(width, 20)));
}

std::string PassLines(const RunReport& report, int width) {
  std::string text;
  for (std::size_t pass = 0; report.passes.size() > 1 && pass < report.passes.size(); ++pass) {
    const PassOutcome& outcome = report.passes[pass];
    text += Line(fmt::format("Pass {}{}: {} deleted in {:.1f} s", pass + 1,
                             outcome.database.empty() ? "" : " over " + outcome.database,
                             Counted(outcome.rows_deleted, "row"), outcome.seconds),
                 width);
  }
  return text;
}

/// The line or lines with the line feed at their end, which is not coloured.
std::string Coloured(const std::string& lines, fmt::terminal_color colour, bool use) {
  return use ? fmt::format(fmt::fg(colour) | fmt::emphasis::bold, "{}", lines.substr(0, lines.size() - 1)) + "\n"
             : lines;
}

/// Databases whose compaction the options left out, with the reason.
std::string CompactionNotes(const RunReport& report, std::size_t width) {
  std::vector<std::string> parts;
  for (const DatabaseReport& database : report.databases) {
    if (database.not_compacted && !database.problem) {
      parts.push_back(fmt::format("{} ({})", database.name, database.not_compacted->reason));
    }
  }
  return parts.empty() ? "" : Indented(fmt::format("Not compacted: {}", fmt::join(parts, ", ")), 0, width);
}

/// What is to be known of tables: those that are missing, and those that lost most of their rows.
std::string TableNotes(const RunReport& report, std::size_t width) {
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
  const std::string names = fmt::format("Tables that are not there, which is no failure: {}", fmt::join(missing, ", "));
  return (missing.empty() ? "" : Indented(names, 0, width)) +
         (lost_most ? Indented("LOST: the share of a table's rows that the rules take, where it is over half", 0, width)
                    : "");
}

std::string PassFailure(const PassOutcome& pass) {
  const std::string where = pass.failure            ? fmt::format(" in {}", pass.failure->database)
                            : pass.database.empty() ? ""
                                                    : " over " + pass.database;
  std::string text =
      fmt::format("The pass failed{}: {} ({} {})", where, pass.result.what.empty() ? "no message" : pass.result.what,
                  CategoryName(pass.result.category), pass.result.code);
  if (pass.failure) {
    text += "; the statement was " + pass.failure->sql;
  }
  return Printable(text);
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

/// The passes that failed, without those that the user ended.
std::vector<std::string> PassFailures(const RunReport& report) {
  std::vector<std::string> lines;
  for (const PassOutcome& pass : report.passes) {
    if (pass.result.Failed() && report.signal == 0) {
      lines.push_back(PassFailure(pass));
    }
  }
  return lines;
}

std::vector<std::string> WhatToDo(const RunReport& report) {
  std::vector<std::string> lines = AdviceLines(report);
  if (lines.empty() && !PassFailures(report).empty()) {
    lines.push_back(Advice(report.Result()));
  }
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
  if (report.planned) {
    return fmt::format(
        "{} would go, {}", Counted(total.deleted.Sum(), "row"),
        change.starts_with("grew") ? "the files would grow" : (change.empty() ? "0 B" : change) + " would be freed");
  }
  return fmt::format("{} deleted, {} in {:.1f} s", Counted(total.deleted.Sum(), "row"),
                     change.starts_with("grew") ? change : (change.empty() ? "0 B" : change) + " freed",
                     report.Seconds());
}

bool AllIsWell(const RunReport& report) { return report.signal == 0 && !report.Result().Failed(); }

/// What became of the databases, or would.
std::string Verb(const RunReport& report) {
  if (report.signal != 0) {
    return report.planned ? "Interrupted: would clean" : "Interrupted: cleaned";
  }
  return report.planned ? "Would clean" : "Cleaned";
}

/// How the run went, in one sentence.
std::string Outcome(const RunReport& report) {
  const auto all = static_cast<std::int64_t>(report.databases.size());
  if (AllIsWell(report)) {
    return fmt::format("{} {}", Verb(report), Counted(all, "database"));
  }
  const std::string rest = NotCleaned(report);
  return fmt::format("{} {} of {}{}", Verb(report), report.Cleaned(), Counted(all, "database"),
                     rest.empty() ? "" : "; not cleaned: " + rest);
}

}  // namespace

std::string RunText(const RunReport& report, bool colour, int width) {
  if (report.databases.empty() && report.signal == 0) {
    return Line(
        fmt::format("Nothing to clean: {} ({}) holds none of the {}", Printable(common::Utf8(report.directory)),
                    report.directory_source, report.narrowed ? "databases that were named" : "catalogue's databases"),
        width);
  }
  const Sums total = SumUp(report);
  constexpr int kUsualWidth = 80;
  const auto folded = static_cast<std::size_t>(width == 0 ? kUsualWidth : std::max(width, 20));
  std::string failures;
  for (const std::string& line : PassFailures(report)) {
    failures += Coloured(Line(line, width), fmt::terminal_color::red, colour);
  }
  for (const std::string& line : WhatToDo(report)) {
    failures += Indented(line, 0, folded);
  }
  const std::string table = report.databases.empty() ? "" : RunTable(report, colour, width);
  const std::string place = fmt::format("{} ({}){}", Printable(common::Utf8(report.directory)), report.directory_source,
                                        report.planned ? ", planned on copies: nothing there was changed" : "");
  return Line(place, width) + "\n" + table + PassLines(report, width) + TableNotes(report, folded) +
         CompactionNotes(report, folded) + failures +
         (AllIsWell(report) ? Coloured(Line(Outcome(report) + ": " + Figures(report, total), width),
                                       fmt::terminal_color::green, colour)
                            : Coloured(Line(Outcome(report), width), fmt::terminal_color::red, colour) +
                                  Line(Figures(report, total), width));
}

std::vector<std::string> Failures(const RunReport& report) {
  std::vector<std::string> lines = PassFailures(report);
  const std::vector<std::string> what_to_do = WhatToDo(report);
  lines.insert(lines.end(), what_to_do.begin(), what_to_do.end());
  lines.push_back(Outcome(report));
  return lines;
}

}  // namespace corvo::telemetry::host
