#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/time_text.h"
#include "host/show/verify/history_text.h"

namespace corvo::telemetry::host {
namespace {

Json OrNull(const std::optional<std::int64_t>& value) { return value ? Json(*value) : Json(nullptr); }

/// An empty text is none.
Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json DeletedJson(const Deleted& deleted) {
  return {{"expired", deleted.expired}, {"row_limit", deleted.row_limit}, {"size_limit", deleted.size_limit}};
}

Json DatabaseJson(const DatabaseRecord& database) {
  Json tables = Json::array();
  for (const TableRecord& table : database.tables) {
    tables.push_back({{"table", table.table},
                      {"rows_before", OrNull(table.rows_before)},
                      {"rows_after", OrNull(table.rows_after)},
                      {"deleted", DeletedJson(table.deleted)},
                      {"seconds", table.seconds}});
  }
  return {{"name", database.name},
          {"cleaned", database.problem.empty()},
          {"problem", TextOrNull(database.problem)},
          {"bytes_before", database.bytes_before},
          {"bytes_after", database.bytes_after},
          {"compaction_seconds", database.compaction_seconds},
          {"compacted_bytes", database.compacted_bytes},
          {"not_compacted", TextOrNull(database.not_compacted)},
          {"tables", tables}};
}

Json RunJson(const RunRecord& run) {
  Json databases = Json::array();
  for (const DatabaseRecord& database : run.databases) {
    databases.push_back(DatabaseJson(database));
  }
  return {{"start", TimeText(run.start)},    {"end", TimeText(run.end)},
          {"seconds", run.seconds},          {"problem", TextOrNull(run.result)},
          {"interrupted", run.signal != 0},  {"deleted", DeletedJson(run.DeletedRows())},
          {"bytes_freed", run.BytesFreed()}, {"databases", databases}};
}

}  // namespace

std::string HistoryDocument(const DataDirectory& directory, const std::vector<RunRecord>& runs) {
  Json records = Json::array();
  for (const RunRecord& run : runs) {
    records.push_back(RunJson(run));
  }
  const Json document = {{"schema_version", 1},
                         {"kind", "history"},
                         {"data_directory", {{"path", common::Utf8(directory.path)}, {"source", directory.origin}}},
                         {"runs", records}};
  return JsonText(document) + "\n";
}

}  // namespace corvo::telemetry::host
