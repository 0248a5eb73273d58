#include "host/show/run/run_json.h"

#include "common/text.h"
#include "host/show/advice.h"
#include "host/show/json_text.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

template <class Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

/// An empty text is none.
Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json TableJson(const TableReport& table) {
  return {{"table", table.table},
          {"rows_before", OrNull(table.rows_before)},
          {"rows_after", OrNull(table.rows_after)},
          {"missing", table.missing},
          {"deleted", DeletedJson(table.deleted)},
          {"added_by_others", OrNull(table.AddedByOthers())},
          {"problem", TextOrNull(table.problem)},
          {"oldest_left", table.oldest_left ? Json(TimeText(*table.oldest_left)) : Json(nullptr)},
          {"seconds", table.seconds}};
}

const char* NameOf(Problem::Kind kind) {
  switch (kind) {
    case Problem::Kind::kCannotOpen:
      return "cannot_open";
    case Problem::Kind::kPathTooLong:
      return "path_too_long";
    case Problem::Kind::kBusy:
      return "busy";
    case Problem::Kind::kUnfit:
      return "unfit";
    case Problem::Kind::kNoRoom:
      return "no_room";
    case Problem::Kind::kFailed:
      return "failed";
    case Problem::Kind::kNotReached:
      return "not_reached";
    case Problem::Kind::kInterrupted:
      break;
  }
  return "interrupted";
}

Json NotCompactedJson(const std::optional<LeftOutCompaction>& left_out) {
  if (!left_out) {
    return nullptr;
  }
  return {
      {"reason", left_out->reason}, {"free_percent", left_out->free_percent}, {"seconds", OrNull(left_out->seconds)}};
}

Json DatabaseJson(const DatabaseReport& database) {
  Json tables = Json::array();
  for (const TableReport& table : database.tables) {
    tables.push_back(TableJson(table));
  }
  return {{"name", database.name},
          {"path", common::Utf8(database.path)},
          {"bytes_before", database.bytes_before},
          {"bytes_after", database.bytes_after},
          {"tables", tables},
          {"cleaned", !database.problem},
          {"problem", ProblemJson(database.problem)},
          {"compaction_seconds", database.compaction_seconds},
          {"not_compacted", NotCompactedJson(database.not_compacted)}};
}

Json PassJson(const PassOutcome& pass) {
  return {{"database", TextOrNull(pass.database)},
          {"result", ErrorJson(pass.result)},
          {"rows_deleted", pass.rows_deleted},
          {"seconds", pass.seconds},
          {"failed_database", pass.failure ? Json(pass.failure->database) : Json(nullptr)},
          {"failed_statement", pass.failure ? Json(pass.failure->sql) : Json(nullptr)},
          {"advice", pass.result.Failed() ? Json(Advice(pass.result)) : Json(nullptr)}};
}

/// A run that did nothing; the other members follow in place.
Json EmptyDocument(const common::Error& result) {
  return {{"schema_version", 1},  {"result", ErrorJson(result)}, {"databases", Json::array()},
          {"seconds", 0.0},       {"data_directory", nullptr},   {"cleaned", 0},
          {"interrupted", false}, {"passes", Json::array()},     {"planned", false}};
}

}  // namespace

Json DeletedJson(const Deleted& deleted) {
  return {{"expired", deleted.expired}, {"row_limit", deleted.row_limit}, {"size_limit", deleted.size_limit}};
}

Json ProblemJson(const std::optional<Problem>& problem) {
  if (!problem) {
    return nullptr;
  }
  return {{"kind", NameOf(problem->kind)},
          {"reason", problem->reason},
          {"record", problem->record.Failed() ? ErrorJson(problem->record) : Json(nullptr)},
          {"advice", TextOrNull(Advice(*problem))}};
}

std::string RunDocument(const RunReport& report) {
  Json document = EmptyDocument(report.Result());
  for (const DatabaseReport& database : report.databases) {
    document["databases"].push_back(DatabaseJson(database));
  }
  document["seconds"] = report.Seconds();
  document["data_directory"] = {{"path", common::Utf8(report.directory)}, {"source", report.directory_source}};
  document["cleaned"] = report.Cleaned();
  document["interrupted"] = report.signal != 0;
  document["planned"] = report.planned;
  for (const PassOutcome& pass : report.passes) {
    document["passes"].push_back(PassJson(pass));
  }
  return JsonText(document) + "\n";
}

std::string RunDocument(const common::Error& error, bool interrupted) {
  Json document = EmptyDocument(error);
  document["interrupted"] = interrupted;
  document["kind"] = "failure";
  return JsonText(document) + "\n";
}

}  // namespace corvo::telemetry::host
