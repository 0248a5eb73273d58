#include "cleanup/operation.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "common/log.h"

namespace corvo::telemetry::cleanup {
namespace {

/// Hands the command to the storage, which owns it from then on, whatever the outcome.
common::Error Execute(shared::TelemetryStorage& storage, std::unique_ptr<shared::ICommand> command) {
  shared::ICommand* list[] = {command.release()};
  return storage.Execute(list, 1, false);
}

void ThrowFailure(const common::Error& error) {
  if (error.Failed()) {
    throw common::Error(error);
  }
}

}  // namespace

common::Error TryStatement(shared::TelemetryStorage& storage, const std::string& sql) {
  return Execute(storage, std::make_unique<shared::SqlCommand>(sql));
}

void RunStatement(shared::TelemetryStorage& storage, const std::string& sql) {
  ThrowFailure(TryStatement(storage, sql));
}

shared::Rows RunQuery(shared::TelemetryStorage& storage, const std::string& sql) {
  auto command = std::make_unique<shared::SqlCommand>(sql);
  const shared::ICommand& executed = *command;
  ThrowFailure(Execute(storage, std::move(command)));
  return executed.GetResults();
}

std::runtime_error OperationFailure(const char* operation, int line, const char* phrase) {
  return std::runtime_error(std::string(operation) + "(" + std::to_string(line) + ") " + phrase);
}

void LogException(const char* operation, const common::Error& what) {
  CORVO_LOG(plog::error, operation) << operation << " - exception : " << what;
}

void LogException(const char* operation, const char* what) {
  CORVO_LOG(plog::error, operation) << operation << " - exception : " << what;
}

void ClearNoSuchTableError(common::Error& error) {
  static const std::vector<std::string> kPatterns = {"no such table:"};
  if (!error.Failed()) {
    return;
  }
  // As a C string: what follows a zero byte is not part of the message. An empty text matches nothing.
  const std::string text = error.what.c_str();
  const auto occurs = [&text](const std::string& pattern) { return text.find(pattern) != std::string::npos; };
  if (std::any_of(kPatterns.begin(), kPatterns.end(), occurs)) {
    error = common::Error();
  }
}

}  // namespace corvo::telemetry::cleanup
