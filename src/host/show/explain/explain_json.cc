#include "host/show/explain/explain_json.h"

#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

template <class Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json TimeOrNull(const std::optional<std::int64_t>& moment) { return moment ? Json(TimeText(*moment)) : Json(nullptr); }

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json NameOf(Rule rule) {
  switch (rule) {
    case Rule::kAge:
      return "age";
    case Rule::kRowLimit:
      return "row_limit";
    case Rule::kSizeLimit:
      return "size_limit";
    case Rule::kNone:
      break;
  }
  return nullptr;
}

Json LimitsJson(const Explanation& explanation) {
  const ContractView& contract = explanation.contract;
  const auto limit = [](Rule rule, const std::string& type, const char* option, std::uint32_t value) {
    return Json{{"rule", NameOf(rule)}, {"type", type}, {"option", option}, {"value", value}};
  };
  Json limits = {limit(Rule::kAge, contract.type, "table_options.retention_days", contract.retention_days),
                 limit(Rule::kRowLimit, contract.type, "table_options.max_rows", contract.max_rows),
                 limit(Rule::kSizeLimit, contract.type, "database_options.max_size_mb", contract.max_size_mb)};
  if (!explanation.database.type.empty()) {
    limits.push_back(limit(Rule::kSizeLimit, explanation.database.type, "database_options.max_size_mb",
                           explanation.database.max_size_mb));
  }
  return limits;
}

Json NowJson(const Explanation& explanation) {
  const TableState& table = explanation.table;
  if (explanation.missing_file || table.missing) {
    return nullptr;
  }
  return {{"rows", table.rows},
          {"oldest", TimeOrNull(table.oldest)},
          {"newest", TimeOrNull(table.newest)},
          {"rows_per_day", table.rows_per_day},
          {"never_expire", table.no_time.rows + table.unreadable.rows},
          {"engine_mb", explanation.engine_mb},
          {"rowids_may_change", explanation.rowids_may_change}};
}

Json RowJson(const RowExplanation& row) {
  return {{"rowid", row.row.rowid},
          {"time", row.row.time},
          {"moment", TimeOrNull(row.row.moment)},
          {"deleted_by", NameOf(row.next_pass)},
          {"expires_after", TimeOrNull(row.expires)},
          {"rows_until_limit", OrNull(row.rows_until_limit)},
          {"days_until_limit", OrNull(row.days_until_limit)}};
}

}  // namespace

std::string ExplainDocument(const Explanation& explanation) {
  const Deleted& next = explanation.table.next_pass;
  Json rows = Json::array();
  for (const RowExplanation& row : explanation.rows) {
    rows.push_back(RowJson(row));
  }
  Json missing_rows = Json::array();
  for (const MissingRow& row : explanation.missing_rows) {
    missing_rows.push_back(row.rowid);
  }
  return JsonText({{"schema_version", 1},
                   {"kind", "explain"},
                   {"now", TimeText(explanation.now)},
                   {"table", explanation.contract.table},
                   {"database", explanation.contract.database},
                   {"path", common::Utf8(explanation.path)},
                   {"limits", LimitsJson(explanation)},
                   {"table_now", NowJson(explanation)},
                   {"first", NameOf(explanation.reach.first)},
                   {"age_days", OrNull(explanation.reach.age_days)},
                   {"row_limit_days", OrNull(explanation.reach.row_limit_days)},
                   {"next_pass",
                    {{"expired", next.expired},
                     {"row_limit", next.row_limit},
                     {"size_limit", next.size_limit},
                     {"trim_factor", explanation.trim_factor},
                     {"left_alone", TextOrNull(explanation.left_alone)}}},
                   {"rows", rows},
                   {"missing_rows", missing_rows}}) +
         "\n";
}

}  // namespace corvo::telemetry::host
