#include "cleanup/operation.h"

namespace corvo::telemetry::cleanup {
namespace {

/// Runs one statement as a list of one and returns its command, which the storage owns.
const shared::ICommand& Run(shared::TelemetryStorage& storage, const std::string& sql) {
  shared::ICommand* commands[] = {new shared::SqlCommand(sql.c_str())};
  const common::Error error = storage.Execute(commands, 1, false);
  if (error.Failed()) {
    throw common::Error(error);
  }
  return *commands[0];
}

}  // namespace

void RunStatement(shared::TelemetryStorage& storage, const std::string& sql) { Run(storage, sql); }

Rows RunQuery(shared::TelemetryStorage& storage, const std::string& sql) { return Run(storage, sql).GetResults(); }

common::Error OperationError(const char* operation, int line, const char* phrase) {
  return common::Error(std::runtime_error(std::string(operation) + "(" + std::to_string(line) + phrase));
}

}  // namespace corvo::telemetry::cleanup
