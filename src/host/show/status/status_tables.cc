#include "host/show/status/status_tables.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "common/timestamp.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::int64_t kMegabyte = 1'000'000;

template <class Subject>
struct TextColumn {
  const char* head;
  int rank;
  std::function<std::string(const Subject&)> text;
};

template <class Subject>
FittingColumn Texts(const std::vector<const Subject*>& subjects, const TextColumn<Subject>& column, Align align) {
  FittingColumn filled{.head = column.head, .align = align, .rank = column.rank};
  for (const Subject* subject : subjects) {
    filled.texts.push_back(column.text(*subject));
  }
  return filled;
}

template <class Subject>
FittingColumn Bars(const std::vector<const Subject*>& subjects, const char* head, int rank,
                   const std::function<std::optional<double>(const Subject&)>& share) {
  FittingColumn filled{.head = head, .align = Align::kLeft, .rank = rank, .bars = true};
  for (const Subject* subject : subjects) {
    filled.shares.push_back(share(*subject));
  }
  return filled;
}

double Ratio(std::int64_t part, std::int64_t whole) { return static_cast<double>(part) / static_cast<double>(whole); }

std::optional<double> SizeShare(const DatabaseState& database) {
  return database.max_size_mb == 0 ? std::nullopt
                                   : std::optional(Ratio(database.file_bytes, database.max_size_mb * kMegabyte));
}

std::string SizeLimit(const DatabaseState& database) {
  return database.max_size_mb == 0 ? "none" : fmt::format("{} MB", WithSeparators(database.max_size_mb));
}

/// The engine's size, where it is another than the real one.
std::string EngineSize(const DatabaseState& database) {
  const std::int64_t whole = database.file_bytes / kMegabyte;
  const bool same = database.problem || database.engine_mb == whole || database.engine_mb == whole + 1;
  return same ? "" : fmt::format("{} MB", WithSeparators(database.engine_mb));
}

std::string KnownBytes(const DatabaseState& database, std::int64_t bytes) {
  return database.problem ? "?" : HumanBytes(bytes);
}

std::optional<std::int64_t> AgeInDays(const TableState& table, std::int64_t now) {
  return table.oldest ? std::optional(std::max<std::int64_t>(now - *table.oldest, 0) / common::kSecondsPerDay)
                      : std::nullopt;
}

std::optional<double> RowShare(const TableState& table) {
  return table.contract.max_rows == 0 || table.missing || !table.problem.empty()
             ? std::nullopt
             : std::optional(Ratio(table.rows, table.contract.max_rows));
}

std::optional<double> AgeShare(const TableState& table, std::int64_t now) {
  return table.contract.retention_days == 0 || !table.oldest
             ? std::nullopt
             : std::optional(Ratio(std::max<std::int64_t>(now - *table.oldest, 0),
                                   table.contract.retention_days * common::kSecondsPerDay));
}

std::string Limited(const std::string& value, std::uint32_t limit) {
  return limit == 0 ? value : value + "/" + WithSeparators(limit);
}

std::string RowsText(const TableState& table) {
  if (table.missing) {
    return "-";
  }
  return table.problem.empty() ? Limited(WithSeparators(table.rows), table.contract.max_rows) : "?";
}

std::string AgeText(const TableState& table, std::int64_t now) {
  constexpr std::int64_t kMost = 9'999;
  const auto days = AgeInDays(table, now);
  if (!days) {
    return "";
  }
  const std::string text = (*days > kMost ? ">" : "") + WithSeparators(std::min(*days, kMost));
  return Limited(text, table.contract.retention_days) + " d";
}

std::string NewestText(const TableState& table) { return table.newest ? TimeText(*table.newest).substr(0, 16) : ""; }

std::string FullIn(const TableState& table) {
  if (!table.days_to_row_limit) {
    return "";
  }
  const double days = *table.days_to_row_limit;
  if (table.next_pass.row_limit > 0) {
    return "now";
  }
  constexpr double kMost = 9'999;
  return days < 1 ? "<1 d" : (days > kMost ? ">" : "") + WithSeparators(std::llround(std::min(days, kMost))) + " d";
}

std::string PerDay(const TableState& table) {
  return table.rows_per_day <= 0  ? ""
         : table.rows_per_day < 1 ? "<1"
                                  : WithSeparators(std::llround(table.rows_per_day));
}

std::string WouldGo(const TableState& table) {
  const std::int64_t rows = table.next_pass.Sum();
  return rows == 0 ? "" : WithSeparators(rows);
}

}  // namespace

double UsedUp(const TableState& table, std::int64_t now) {
  // Where rows come in all the time, the oldest is always close to its retention.
  const double age = IsOverAge(table, now) ? AgeShare(table, now).value_or(0) : 0;
  return std::max(RowShare(table).value_or(0), age);
}

std::string DatabaseTable(const DirectoryState& state, const Display& display) {
  std::vector<const DatabaseState*> present;
  std::vector<Tone> tones;
  for (const DatabaseState& database : state.databases) {
    if (!database.missing) {
      present.push_back(&database);
      tones.push_back(database.problem || IsOverSizeLimit(database) ? Tone::kWarning : Tone::kPlain);
    }
  }
  using Column = TextColumn<DatabaseState>;
  const auto text = [&](const Column& column) { return Texts(present, column, Align::kRight); };
  const Column name{"DATABASE", 0, [](const auto& database) { return database.name; }};
  return FormatFitting(
      {Texts(present, name, Align::kLeft), Bars<DatabaseState>(present, "SIZE", 0, &SizeShare),
       text({"FILE", 0, [](const auto& database) { return HumanBytes(database.file_bytes); }}),
       text({"LIMIT", 1, &SizeLimit}),
       text({"LIVE", 5, [](const auto& database) { return KnownBytes(database, database.live_bytes); }}),
       text({"FREE", 2, [](const auto& database) { return KnownBytes(database, database.free_bytes); }}),
       text({"WAL", 3, [](const auto& each) { return each.wal_bytes == 0 ? "" : HumanBytes(each.wal_bytes); }}),
       text({"ENGINE", 4, &EngineSize})},
      tones, display);
}

std::string TableTable(const std::vector<const TableState*>& tables, std::int64_t now, bool forecast,
                       const Display& display) {
  std::vector<Tone> tones;
  tones.reserve(tables.size());
  for (const TableState* table : tables) {
    tones.push_back(NeedsAttention(*table, now) ? Tone::kWarning : Tone::kPlain);
  }
  using Column = TextColumn<TableState>;
  const auto text = [&](const Column& column) { return Texts(tables, column, Align::kRight); };
  const Column name{"TABLE", 0, [](const auto& table) { return table.contract.table; }};
  std::vector<FittingColumn> columns = {
      Texts(tables, name, Align::kLeft),
      Bars<TableState>(tables, "ROWS", 0, &RowShare),
      text({"OF LIMIT", 0, &RowsText}),
      Bars<TableState>(tables, "OLDEST", 1, [now](const auto& table) { return AgeShare(table, now); }),
      text({"OF LIMIT", 2, [now](const auto& table) { return AgeText(table, now); }}),
      text({"NEWEST", 6, &NewestText}),
      text({"A DAY", 5, &PerDay}),
      text({"FULL IN", 3, &FullIn})};
  if (forecast) {
    columns.push_back(text({"WOULD GO", 4, &WouldGo}));
  }
  return FormatFitting(columns, tones, display);
}

}  // namespace corvo::telemetry::host
