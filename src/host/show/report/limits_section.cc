#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>

#include "common/text.h"
#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

Json Chip(const char* tone, const std::string& text) { return {{"tone", tone}, {"text", text}}; }

/// A size with its unit, how it is called by programs, and the limit.
Json Meter(const char* label, const char* name, const Json& size, std::uint32_t limit_mb) {
  Json meter = {{"label", label}, {"bytes", size}};
  meter["bytes"]["class"] = name;
  meter["of"] = limit_mb == 0 ? "no limit" : fmt::format("of {} MB", WithSeparators(limit_mb));
  meter["bar"] = limit_mb == 0 ? Json() : LimitBar(size["value"].get<double>(), 1e6 * limit_mb);
  return meter;
}

Json Meters(const DatabaseState& database) {
  Json meters = Json::array();
  meters.push_back(Meter("File", "file_bytes", Size(database.file_bytes), database.max_size_mb));
  if (!database.problem) {
    const Json size = {{"value", std::int64_t{1'000'000} * database.engine_mb},
                       {"text", WithSeparators(database.engine_mb) + " MB"}};
    meters.push_back(Meter("As a pass measures it", "engine_bytes", size, database.max_size_mb));
  }
  return meters;
}

Json Chips(const DatabaseState& database, std::int64_t now) {
  Json chips = Json::array();
  if (database.problem) {
    chips.push_back(Chip("bad", "cannot be read"));
  } else {
    chips.push_back(NeedsAttention(database, now) ? Chip("warn", "needs attention")
                                                  : Chip("good", "within its limits"));
  }
  if (database.trim_factor > 0) {
    chips.push_back(Chip("bad", fmt::format("over its size limit: a pass takes {:.0f} % of every table",
                                            std::min(100 * database.trim_factor, 100.0))));
  }
  return chips;
}

/// The tables of the catalogue that are not there, which is nothing wrong.
std::string MissingTables(const DatabaseState& database) {
  std::vector<std::string> names;
  for (const TableState& table : database.tables) {
    if (table.missing) {
      names.push_back(table.contract.table);
    }
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

Json DatabaseJson(const DatabaseState& database, std::int64_t now) {
  Json tables = Json::array();
  for (const TableState& table : database.tables) {
    if (!table.missing && !database.problem) {
      tables.push_back(TableLimits(table, now));
    }
  }
  return {{"name", database.name},
          {"file", common::Utf8(database.path.filename())},
          {"problem", database.problem ? Json(database.problem->reason) : Json()},
          {"chips", Chips(database, now)},
          {"meters", Meters(database)},
          {"live_bytes", database.problem ? Json() : Size(database.live_bytes)},
          {"free_bytes", database.problem ? Json() : Size(database.free_bytes)},
          {"wal_bytes", Size(database.wal_bytes)},
          {"has_tables", !tables.empty()},
          {"tables", tables},
          {"missing", database.problem ? "" : MissingTables(database)}};
}

}  // namespace

std::string LimitsSection(const DirectoryState& state) {
  Json databases = Json::array();
  std::vector<std::string> missing;
  for (const DatabaseState& database : state.databases) {
    if (database.missing) {
      missing.push_back(database.name);
    } else {
      databases.push_back(DatabaseJson(database, state.now));
    }
  }
  return FillTemplate(templates::kLimits, {{"moment", Moment(state.now)},
                                           {"databases", databases},
                                           {"without_file", fmt::format("{}", fmt::join(missing, ", "))}});
}

}  // namespace corvo::telemetry::host
