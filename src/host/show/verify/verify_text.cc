#include "host/show/verify/verify_text.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "common/text.h"
#include "host/show/advice.h"
#include "host/show/fold.h"
#include "host/show/text_table.h"
#include "host/show/time_text.h"
#include "host/show/units.h"
#include "host/show/verify/breach_text.h"

namespace corvo::telemetry::host {
namespace {

std::string WordOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kNone:
      return "-";
    case Outcome::kKept:
      return "ok";
    case Outcome::kUnknown:
      return "?";
    case Outcome::kBroken:
      break;
  }
  return "BROKEN";
}

std::int64_t NewRows(const DatabaseCheck& database) {
  std::int64_t rows = 0;
  for (const TableVerdict& table : database.tables) {
    rows += table.came_since;
  }
  return rows;
}

/// What no run has promised yet is not broken; damage is.
bool IsNotYet(const DatabaseCheck& database, Promise promise) {
  return !database.run && promise != Promise::kSound && database.outcomes.Of(promise) == Outcome::kBroken;
}

TableLine LineOf(const DatabaseCheck& database) {
  TableLine line{{database.name}, database.breaches.empty() ? Tone::kPlain : Tone::kWarning};
  for (const Promise promise : kPromises) {
    line.cells.push_back(IsNotYet(database, promise) ? "not yet" : WordOf(database.outcomes.Of(promise)));
  }
  if (const std::int64_t rows = NewRows(database); rows > 0) {
    line.cells.push_back(WithSeparators(rows));
  }
  return line;
}

std::string Table(const Verification& verification, bool colour) {
  std::vector<TableLine> lines = {
      {{"", "", "", "NO FREE", "NONE", "WITHIN", "NOTHING"}, Tone::kFaint},
      {{"DATABASE", "CLEANED", "SOUND", "PAGES", "TOO OLD", "LIMITS", "LOST"}, Tone::kFaint}};
  if (std::any_of(verification.databases.begin(), verification.databases.end(),
                  [](const DatabaseCheck& each) { return NewRows(each) > 0; })) {
    lines[0].cells.emplace_back("NEW");
    lines[1].cells.emplace_back("ROWS");
  }
  std::vector<Align> alignments(kPromises.size() + 1, Align::kLeft);
  alignments.push_back(Align::kRight);
  for (const DatabaseCheck& database : verification.databases) {
    lines.push_back(LineOf(database));
  }
  return FormatTable(lines, alignments, colour);
}

/// Where there is no room for the promises side by side: what is the worst of each database. What breaks them follows.
std::string NarrowTable(const Verification& verification, bool colour) {
  std::vector<TableLine> lines = {{{"DATABASE", "PROMISES"}, Tone::kFaint}};
  for (const DatabaseCheck& database : verification.databases) {
    const TableLine line = LineOf(database);
    std::string worst = "ok";
    for (const char* word : {"?", "not yet", "BROKEN"}) {
      worst = std::find(line.cells.begin() + 1, line.cells.end(), word) != line.cells.end() ? word : worst;
    }
    lines.push_back({{database.name, worst}, line.tone});
  }
  return FormatTable(lines, {Align::kLeft, Align::kLeft}, colour);
}

std::string FittingTable(const Verification& verification, std::size_t width, bool colour) {
  const std::string table = Table(verification, false);
  const bool fits = FoldedLines(table, width) == table;
  return fits ? Table(verification, colour) : NarrowTable(verification, colour);
}

/// The text two columns in, and further in where it goes on.
std::string Hanging(const std::string& text, std::size_t width) {
  std::string lines;
  constexpr std::size_t kMargin = 2;
  for (const std::string& line : Folded(text, width - std::min(width, kMargin), kMargin)) {
    lines += std::string(kMargin, ' ') + line + "\n";
  }
  return lines;
}

/// What is held against what.
std::string Basis(const Verification& verification) {
  std::set<std::int64_t> runs;
  bool unrecorded = false;
  for (const DatabaseCheck& database : verification.databases) {
    unrecorded = unrecorded || !database.run;
    if (database.run) {
      runs.insert(database.run->start);
    }
  }
  constexpr const char* kUnrecorded =
      "what is beyond a limit now is what a run would take, and what was lost cannot be told\n";
  if (!verification.history_problem.empty()) {
    return fmt::format("The record of the runs cannot be read: {}\nSo {}", Printable(verification.history_problem),
                       kUnrecorded);
  }
  if (runs.empty()) {
    return fmt::format("No run is recorded, so none has promised anything: {}", kUnrecorded);
  }
  const std::string text = runs.size() == 1 ? fmt::format("After the run of {}\n", TimeText(*runs.begin()))
                                            : fmt::format("After the last run of each, from {} to {}\n",
                                                          TimeText(*runs.begin()), TimeText(*runs.rbegin()));
  return unrecorded ? fmt::format("{}For some no run is recorded: {}", text, kUnrecorded) : text;
}

/// What breaks the promises of a database, and what kept them from being seen.
std::string Reasons(const DatabaseCheck& database, std::size_t width, bool colour) {
  std::string text;
  for (const Breach& breach : database.breaches) {
    text += Hanging(BreachText(breach), width);
  }
  if (database.problem) {
    text += Hanging("cannot be looked at: " + Printable(database.problem->reason), width);
  }
  return text.empty() ? "" : InTone(database.name, Tone::kStrong, colour) + "\n" + text;
}

/// What to do about files that are damaged or cannot be looked at; each advice once, with the databases it is for.
std::string AdviceLines(const Verification& verification, std::size_t width) {
  std::map<std::string, std::vector<std::string>> all;
  for (const DatabaseCheck& database : verification.databases) {
    if (database.problem) {
      all[Advice(*database.problem)].push_back(database.name);
    } else if (database.damage.Failed()) {
      all[Advice(database.damage)].push_back(database.name);
    }
  }
  all.erase("");
  std::string text;
  for (const auto& [advice, names] : all) {
    text += Indented(fmt::format("{}: {}", fmt::join(names, ", "), advice), 0, width);
  }
  return text;
}

/// Breaches, and the databases that have them.
struct Breaches {
  std::int64_t number = 0;
  std::int64_t databases = 0;
};

Breaches BreachesOf(const Verification& verification, bool recorded) {
  Breaches breaches;
  for (const DatabaseCheck& database : verification.databases) {
    if (database.run.has_value() == recorded && !database.breaches.empty()) {
      breaches.number += static_cast<std::int64_t>(database.breaches.size());
      ++breaches.databases;
    }
  }
  return breaches;
}

std::string NothingBroken(const Verification& verification) {
  std::int64_t rows = 0;
  for (const DatabaseCheck& database : verification.databases) {
    rows += NewRows(database);
  }
  return fmt::format("No broken promise in {}{}{}",
                     Counted(static_cast<std::int64_t>(verification.databases.size()), "database"),
                     verification.IsComplete() ? "" : ", but not all could be seen",
                     rows > 0 ? fmt::format("; {} came in since, which no limit counts", Counted(rows, "row")) : "");
}

std::string Summary(const Verification& verification) {
  const auto all = static_cast<std::int64_t>(verification.databases.size());
  const Breaches broken = BreachesOf(verification, true);
  const Breaches found = BreachesOf(verification, false);
  std::vector<std::string> parts;
  if (broken.number > 0) {
    parts.push_back(fmt::format("{} in {} of {}", Counted(broken.number, "broken promise"), broken.databases,
                                Counted(all, "database")));
  }
  if (found.number > 0) {
    parts.push_back(fmt::format("{} in {} of {}, with no run on record", Counted(found.number, "finding"),
                                found.databases, Counted(all, "database")));
  }
  return parts.empty() ? NothingBroken(verification) : fmt::format("{}", fmt::join(parts, "; "));
}

}  // namespace

std::string VerifyText(const Verification& verification, std::size_t width, bool colour) {
  const std::string place =
      fmt::format("{} ({})", Printable(common::Utf8(verification.directory)), Printable(verification.directory_source));
  if (verification.databases.empty()) {
    return Indented(
        fmt::format("Nothing to verify: {} holds no database of the catalogue, and no run is recorded there", place), 0,
        width);
  }
  std::string reasons;
  for (const DatabaseCheck& database : verification.databases) {
    reasons += Reasons(database, width, colour);
  }
  reasons += AdviceLines(verification, width);
  const Tone tone = verification.AnythingBroken() ? Tone::kWarning : Tone::kStrong;
  const std::string summary = Indented(Summary(verification), 0, width);
  return fmt::format("{}{}\n{}\n{}{}{}\n", Indented(place, 0, width), FoldedLines(Basis(verification), width),
                     FittingTable(verification, width, colour), reasons, reasons.empty() ? "" : "\n",
                     InTone(summary.substr(0, summary.size() - 1), tone, colour));
}

}  // namespace corvo::telemetry::host
