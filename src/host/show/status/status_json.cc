#include "host/show/status/status_json.h"

#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/run/run_json.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

Json TimeOrNull(const std::optional<std::int64_t>& time) { return time ? Json(TimeText(*time)) : Json(nullptr); }

Json OddJson(const OddRows& odd) {
  const Json sample = {{"rowid", odd.rowid}, {"time", odd.sample}};
  return {{"rows", odd.rows}, {"sample", odd.rows == 0 ? Json(nullptr) : sample}};
}

Json TableJson(const TableState& table, std::int64_t now) {
  return {{"table", table.contract.table},
          {"max_rows", table.contract.max_rows},
          {"retention_days", table.contract.retention_days},
          {"missing", table.missing},
          {"problem", table.problem.empty() ? Json(nullptr) : Json(table.problem)},
          {"attention", NeedsAttention(table, now)},
          {"rows", table.rows},
          {"oldest", TimeOrNull(table.oldest)},
          {"newest", TimeOrNull(table.newest)},
          {"no_time", OddJson(table.no_time)},
          {"unreadable", OddJson(table.unreadable)},
          {"future", OddJson(table.future)},
          {"ancient", OddJson(table.ancient)},
          {"rows_per_day", table.rows_per_day},
          {"days_to_row_limit", table.days_to_row_limit ? Json(*table.days_to_row_limit) : Json(nullptr)},
          {"next_run", DeletedJson(table.next_pass)},
          {"engine_mb", table.engine_mb}};
}

Json DatabaseJson(const DatabaseState& database, std::int64_t now) {
  Json tables = Json::array();
  for (const TableState& table : database.tables) {
    tables.push_back(TableJson(table, now));
  }
  return {{"name", database.name},
          {"path", common::Utf8(database.path)},
          {"max_size_mb", database.max_size_mb},
          {"missing", database.missing},
          {"problem", ProblemJson(database.problem)},
          {"attention", NeedsAttention(database, now)},
          {"file_bytes", database.file_bytes},
          {"wal_bytes", database.wal_bytes},
          {"live_bytes", database.live_bytes},
          {"free_bytes", database.free_bytes},
          {"engine_mb", database.engine_mb},
          {"trim_share", database.trim_factor},
          {"tables", tables}};
}

}  // namespace

std::string StatusDocument(const DirectoryState& state) {
  Json document = {{"schema_version", 1},
                   {"kind", "status"},
                   {"data_directory", {{"path", common::Utf8(state.directory)}, {"source", state.directory_source}}},
                   {"now", TimeText(state.now)},
                   {"databases", Json::array()}};
  for (const DatabaseState& database : state.databases) {
    document["databases"].push_back(DatabaseJson(database, state.now));
  }
  return JsonText(document) + "\n";
}

}  // namespace corvo::telemetry::host
