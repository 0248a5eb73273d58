#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "host/show/report/sections.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string OddText(const OddRows& odd, const char* what) {
  return odd.rowid == 0
             ? fmt::format("{} {}; the first: {}", Counted(odd.rows, "row"), what, odd.sample)
             : fmt::format("{} {}; the first is row {}: {}", Counted(odd.rows, "row"), what, odd.rowid, odd.sample);
}

Json Notes(const TableState& table) {
  struct Kind {
    const OddRows& odd;
    const char* text;
  };
  Json notes = Json::array();
  for (const Kind& kind : {Kind{table.no_time, "without a time, never deleted for age"},
                           Kind{table.unreadable, "with an unreadable time, never deleted for age"},
                           Kind{table.future, "of a time to come, kept too long"},
                           Kind{table.ancient, "whose time reads as a date long ago, deleted at once"}}) {
    if (kind.odd.rows > 0) {
      notes.push_back(OddText(kind.odd, kind.text));
    }
  }
  return notes;
}

Json RowsCell(const TableState& table) {
  const std::uint32_t limit = table.contract.max_rows;
  Json cell = Figure(table.rows);
  cell["of"] = limit == 0 ? Json() : Json(WithSeparators(limit));
  cell["bar"] = nullptr;
  const auto most = static_cast<double>(limit);
  if (limit != 0) {
    cell["bar"] = LimitBar(static_cast<double>(table.rows), most);
    cell["bar"]["threshold"] = Percent(std::floor(most * 0.9), std::max(static_cast<double>(table.rows), most));
  }
  return cell;
}

Json AgeCell(const TableState& table, std::int64_t now) {
  const auto kept = KeptSeconds(table.contract, now);
  Json cell = {{"of", kept ? Json(Days(*kept)) : Json()}, {"text", nullptr}, {"bar", nullptr}, {"value", nullptr}};
  if (table.oldest) {
    const std::int64_t age = std::max<std::int64_t>(now - *table.oldest, 0);
    cell["value"] = TimeText(*table.oldest);
    cell["text"] = Days(age);
    if (kept) {
      cell["bar"] = LimitBar(static_cast<double>(age), static_cast<double>(*kept));
    }
  }
  return cell;
}

std::string Outlook(const TableState& table) {
  if (!table.days_to_row_limit || table.rows == 0) {
    return "";
  }
  const double days = *table.days_to_row_limit;
  if (table.next_pass.row_limit > 0) {
    return "row limit reached";
  }
  return days < 1 ? "row limit within a day"
                  : fmt::format("row limit in {}", Counted(static_cast<std::int64_t>(std::min(days, 1e6)), "day"));
}

std::string Growth(const TableState& table) {
  if (table.rows_per_day <= 0) {
    return "";
  }
  return table.rows_per_day < 9.95
             ? fmt::format("{:.1f} rows a day", table.rows_per_day)
             : fmt::format("{} rows a day", WithSeparators(std::llround(std::min(table.rows_per_day, 1e15))));
}

/// What is wrong with a table, in a few words each.
Json Chips(const TableState& table, std::int64_t now) {
  Json chips = Json::array();
  if (!table.problem.empty()) {
    chips.push_back("cannot be cleaned");
  }
  if (IsOverRowLimit(table)) {
    chips.push_back("over its row limit");
  }
  if (IsOverAge(table, now)) {
    chips.push_back("rows too old");
  }
  if (table.no_time.rows + table.unreadable.rows > 0) {
    chips.push_back("rows that never expire");
  }
  return chips;
}

}  // namespace

Json TableLimits(const TableState& table, std::int64_t now) {
  const Json notes = Notes(table);
  Json json = {{"table", table.contract.table},
               {"chips", Chips(table, now)},
               {"trouble", table.problem},
               {"has_notes", !notes.empty()},
               {"notes", notes},
               {"rows", nullptr},
               {"age", nullptr},
               {"growth", Growth(table)},
               {"outlook", Outlook(table)}};
  if (table.problem.empty()) {
    json["rows"] = RowsCell(table);
    json["age"] = AgeCell(table, now);
  }
  PutDeleted(json, table.next_pass);
  return json;
}

Json LimitBar(double value, double limit) {
  const double end = std::max(value, limit);
  return {{"fill", Percent(std::min(value, limit), end)},
          {"excess", value > limit ? Json(Percent(value - limit, end)) : Json()},
          {"limit", value > limit ? Json(Percent(limit, end)) : Json()},
          {"threshold", nullptr}};
}

}  // namespace corvo::telemetry::host
