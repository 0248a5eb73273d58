#include "host/show/status/status_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text.h"
#include "host/show/fold.h"
#include "host/show/status/odd_rows_text.h"
#include "host/show/status/status_tables.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Tables = std::vector<const TableState*>;

constexpr const char* kAllIsWell = "All is within its limits.";
constexpr const char* kRunTakesItsPart =
    "Nothing needs attention: a run takes rows when they expire, and from nine tenths of a row limit on.";

/// The tables that are there, of databases that could be read.
Tables TablesOf(const DirectoryState& state) {
  Tables tables;
  for (const DatabaseState& database : state.databases) {
    for (const TableState& table : database.tables) {
      if (!database.missing && !database.problem && !table.missing) {
        tables.push_back(&table);
      }
    }
  }
  return tables;
}

std::string Names(const std::vector<std::string>& names) { return fmt::format("{}", fmt::join(names, ", ")); }

/// What cannot be read or cleaned, with the reason; and what is not there.
constexpr std::size_t kMostTables = 8;  // unless all are asked for

std::vector<std::string> ProblemLines(const DirectoryState& state) {
  std::vector<std::string> lines;
  std::vector<std::string> missing;
  for (const DatabaseState& database : state.databases) {
    if (database.missing) {
      missing.push_back(database.name);
    }
    if (database.problem) {
      lines.push_back(fmt::format("{} cannot be read: {}", database.name, Printable(database.problem->reason)));
    }
    for (const TableState& table : database.tables) {
      if (!table.problem.empty()) {
        lines.push_back(table.unread
                            ? fmt::format("{}: {} cannot be read in full: {}", database.name, table.contract.table,
                                          Printable(table.problem))
                            : fmt::format("{} is left alone by runs: {}", database.name, Printable(table.problem)));
      }
    }
  }
  if (!missing.empty()) {
    lines.push_back("Databases without a file, which is no failure: " + Names(missing));
  }
  return lines;
}

/// SQLite takes a log of a thousand pages into the database, and writes it anew from its beginning. One that is much
/// longer could not be, or was a single large transaction.
std::vector<std::string> LogLines(const DirectoryState& state) {
  constexpr std::int64_t kLongLog = 2'000;  // pages
  std::vector<std::string> lines;
  for (const DatabaseState& database : state.databases) {
    if (database.page_bytes > 0 && database.wal_bytes > kLongLog * database.page_bytes) {
      lines.push_back(
          fmt::format("{}: the log holds {} beside {}: it grows while a program reads without an end, and goes when no "
                      "program has the database open any more",
                      database.name, HumanBytes(database.wal_bytes), HumanBytes(database.file_bytes)));
    }
  }
  return lines;
}

Deleted NextRun(const DirectoryState& state) {
  Deleted sum;
  for (const DatabaseState& database : state.databases) {
    for (const TableState& table : database.tables) {
      sum.Add(table.next_pass);
    }
  }
  return sum;
}

std::vector<std::string> NextRunLines(const DirectoryState& state) {
  const Deleted sum = NextRun(state);
  std::vector<std::string> lines;
  for (const DatabaseState& database : state.databases) {
    if (database.trim_factor > 0) {
      lines.push_back(fmt::format("{}: size limit reached, each table would lose {:.0f} % of its rows", database.name,
                                  std::min(database.trim_factor, 1.0) * 100));
    }
  }
  lines.push_back(sum.Sum() == 0 ? "A run now would delete nothing."
                                 : fmt::format("A run now: {} would go ({} expired, {} row limit, {} size limit)",
                                               Counted(sum.Sum(), "row"), WithSeparators(sum.expired),
                                               WithSeparators(sum.row_limit), WithSeparators(sum.size_limit)));
  return lines;
}

template <class Items, class Condition>
std::int64_t HowMany(const Items& items, const Condition& condition) {
  return std::count_if(items.begin(), items.end(), condition);
}

/// What needs attention.
std::string Findings(const DirectoryState& state, const Tables& tables) {
  std::vector<std::string> parts;
  const auto tell = [&parts](std::int64_t count, const char* noun, const std::string& what) {
    if (count > 0) {
      parts.push_back(Counted(count, noun) + " " + what);
    }
  };
  const auto unreadable = [](const DatabaseState& database) { return database.problem.has_value(); };
  const auto over = [&](const TableState* table) { return IsOverRowLimit(*table) || IsOverAge(*table, state.now); };
  const auto holds = [](const TableState* table) {
    return table->no_time.rows + table->unreadable.rows + table->future.rows > 0;
  };
  tell(HowMany(state.databases, unreadable), "database", "not readable");
  tell(HowMany(state.databases, &IsOverSizeLimit), "database", "over the size limit");
  tell(HowMany(tables, over), "table", "over a limit");
  tell(HowMany(tables, holds), "table", "with rows that do not expire in time");
  tell(HowMany(tables, [](const TableState* table) { return !table->problem.empty(); }), "table", "not cleaned");
  return Names(parts);
}

std::string Verdict(const DirectoryState& state, const Tables& tables, bool all) {
  const std::string findings = Findings(state, tables);
  if (findings.empty()) {
    return NextRun(state).Sum() == 0 ? kAllIsWell : kRunTakesItsPart;
  }
  return all || tables.size() <= kMostTables ? findings
                                             : fmt::format("{}; --all shows all {} tables", findings, tables.size());
}

/// Those that are over a limit, or come nearest to it, first.
Tables MostUsedUp(Tables tables, std::size_t most, std::int64_t now) {
  const auto sooner = [now](const TableState* one, const TableState* other) {
    return UsedUp(*one, now) > UsedUp(*other, now);
  };
  std::stable_sort(tables.begin(), tables.end(), sooner);
  tables.resize(std::min(tables.size(), most));
  return tables;
}

/// All that follows the tables but the last line.
std::vector<std::string> Notes(const DirectoryState& state, const Tables& tables, bool all, std::size_t width) {
  std::vector<std::string> lines = all ? OddRowLinesByTable(tables, width) : OddRowLines(tables, width);
  for (const auto& texts : {ProblemLines(state), LogLines(state), NextRunLines(state)}) {
    for (const std::string& text : texts) {
      const std::vector<std::string> folded = Folded(text, width, 2);
      lines.insert(lines.end(), folded.begin(), folded.end());
    }
  }
  return lines;
}

/// How many tables a screen of 24 lines has room for, with the prompt below the text.
std::size_t RoomForTables(std::size_t other_lines) {
  constexpr std::size_t kScreen = 23;
  constexpr std::size_t kFewest = 3;
  return other_lines + kFewest > kScreen ? kFewest : std::min(kScreen - other_lines, kMostTables);
}

}  // namespace

std::string StatusText(const DirectoryState& state, bool all, const Display& display) {
  const std::string where = fmt::format("{} ({})", Printable(common::Utf8(state.directory)), state.directory_source);
  const auto present = static_cast<std::size_t>(
      HowMany(state.databases, [](const DatabaseState& database) { return !database.missing; }));
  if (present == 0) {
    return Indented(fmt::format("Nothing to show: {} holds none of the databases", where), 0, display.width);
  }
  const Tables tables = TablesOf(state);
  const std::vector<std::string> notes = Notes(state, tables, all, display.width);
  const std::vector<std::string> verdict = Folded(Verdict(state, tables, all), display.width, 2);
  const bool well = Findings(state, tables).empty();
  constexpr std::size_t kFrame = 6;  // the directory, two heads, three blank lines
  const std::size_t room = RoomForTables(kFrame + present + notes.size() + verdict.size());
  const Tone tone = well ? Tone::kPlain : Tone::kWarning;
  return Indented(where, 0, display.width) + "\n" + DatabaseTable(state, display) + "\n" +
         (tables.empty()
              ? ""
              : TableTable(all ? tables : MostUsedUp(tables, room, state.now), state.now, all, display) + "\n") +
         fmt::format("{}\n{}\n", fmt::join(notes, "\n"),
                     InTone(fmt::format("{}", fmt::join(verdict, "\n")), tone, display.colour));
}

}  // namespace corvo::telemetry::host
