#include "host/facts/query.h"

#include <cstdlib>

namespace corvo::telemetry::host {

using shared::TelemetryStorage;

common::Error RunStatement(TelemetryStorage& storage, const std::string& sql, shared::Rows* rows) {
  auto* command = new shared::SqlCommand(sql.c_str());
  common::Error error = storage.Execute(command, false);
  if (rows != nullptr && !error.Failed()) {
    *rows = command->GetResults();
  }
  return error;
}

common::Error AskNumber(TelemetryStorage& storage, const std::string& sql, std::int64_t& number) {
  shared::Rows rows;
  common::Error error = RunStatement(storage, sql, &rows);
  if (!error.Failed() && rows.count == 1) {
    number = NumberIn(rows[0][0]);
  }
  return error;
}

std::optional<std::int64_t> AskNumberOrNone(TelemetryStorage& storage, const std::string& sql) {
  shared::Rows rows;
  const common::Error error = RunStatement(storage, sql, &rows);
  return error.Failed() || rows.count != 1 ? std::nullopt : NumberOrNone(rows[0][0]);
}

std::int64_t NumberIn(const shared::Column& value) { return std::strtoll(value.GetColumnValue(), nullptr, 10); }

std::optional<std::int64_t> NumberOrNone(const shared::Column& value) {
  return *value.GetColumnValue() == '\0' ? std::nullopt : std::optional(NumberIn(value));
}

}  // namespace corvo::telemetry::host
