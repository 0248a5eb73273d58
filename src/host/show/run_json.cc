#include "host/show/run_json.h"

#include "common/text.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {
namespace {

Json OptionalNumber(const std::optional<std::int64_t>& number) { return number ? Json(*number) : Json(nullptr); }

Json TablesJson(const DatabaseChange& change) {
  Json tables = Json::array();
  for (std::size_t index = 0; index < change.before->tables.size(); ++index) {
    const TableCount& before = change.before->tables[index];
    const Json after = change.after == nullptr ? Json(nullptr) : OptionalNumber(change.after->tables[index].rows);
    tables.push_back({{"table", before.table}, {"rows_before", OptionalNumber(before.rows)}, {"rows_after", after}});
  }
  return tables;
}

std::string Document(const Json& result, const Json& databases, double seconds) {
  const Json document = {{"schema_version", 1}, {"result", result}, {"databases", databases}, {"seconds", seconds}};
  return JsonText(document) + "\n";
}

}  // namespace

std::string RunDocument(const RunReport& report) {
  Json databases = Json::array();
  for (const DatabaseChange& change : Changes(report)) {
    databases.push_back({{"name", change.before->name},
                         {"path", common::Utf8(change.before->path)},
                         {"bytes_before", change.before->bytes},
                         {"bytes_after", change.after == nullptr ? 0 : change.after->bytes},
                         {"tables", TablesJson(change)}});
  }
  return Document(ErrorJson(report.Result()), databases, report.Seconds());
}

std::string RunDocument(const common::Error& error) { return Document(ErrorJson(error), Json::array(), 0); }

}  // namespace corvo::telemetry::host
