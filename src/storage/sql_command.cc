#include "storage/sql_command.h"

#include <sqlite3.h>

#include <string>

#include "storage/connection/connection.h"
#include "storage/connection/failure.h"

namespace corvo::shared {

using telemetry::common::Error;

struct SqlCommand::State {
  std::string statement;
  Parameters parameters;
  Connection* connection = nullptr;  // of the storage that owns the command
  Rows results;
  int rows_passed = 0;
  Error last_error;

  Error Run();
  void Replace(const char* text, const char** texts, int count);
};

Error SqlCommand::State::Run() {
  rows_passed = 0;
  last_error = connection->Run(statement, parameters, results);
  return last_error;
}

void SqlCommand::State::Replace(const char* text, const char** texts, int count) {
  if (count < 0 || (count > 0 && texts == nullptr)) {
    last_error = Failure(ResultCode::kMisuse, "no parameters");
    return;
  }
  Parameters replaced;
  for (int index = 0; index < count; ++index) {
    replaced.push_back(texts[index] != nullptr ? std::optional<std::string>(texts[index]) : std::nullopt);
  }
  statement = text != nullptr ? text : "";
  parameters = std::move(replaced);
  last_error = Error();
  if (connection != nullptr) {
    static_cast<void>(Run());
  }
}

ICommand::~ICommand() = default;

SqlCommand::SqlCommand(const char* statement) : SqlCommand(std::string_view(statement != nullptr ? statement : "")) {}

SqlCommand::SqlCommand(std::string_view statement) : state_(std::make_unique<State>()) {
  state_->statement = statement;
}

SqlCommand::~SqlCommand() = default;

const char* SqlCommand::GetSqlStatement() const { return state_->statement.c_str(); }

Rows SqlCommand::GetResults() const { return state_->results; }

void SqlCommand::Execute(const char* statement, bool /*flag*/, const char** parameters, const int& count) {
  Execute(statement, parameters, count);
}

void SqlCommand::Execute(const char* statement, const char** parameters, const int& count) {
  try {
    state_->Replace(statement, parameters, count);
  } catch (...) {
    state_->last_error = telemetry::common::MakeErrorFromException(std::current_exception());
  }
}

bool SqlCommand::HasNext() const { return state_->rows_passed < state_->results.count; }

Error SqlCommand::Next() {
  if (!HasNext()) {
    state_->last_error = Failure(SQLITE_DONE, "the results have no further row");
    return state_->last_error;
  }
  ++state_->rows_passed;
  return {};
}

Error SqlCommand::GetLastError() const { return state_->last_error; }

Error SqlCommand::Run(Connection& connection) {
  state_->connection = &connection;
  return state_->Run();
}

}  // namespace corvo::shared
