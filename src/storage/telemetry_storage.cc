#include "storage/telemetry_storage.h"

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <utility>

#include "storage/connection/connection.h"
#include "storage/connection/database_path.h"
#include "storage/connection/failure.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;
using telemetry::common::MakeErrorFromException;

template <class Source>
DatabasePath ResolveOrExplain(Source source) {
  try {
    return ResolveDatabase(source);
  } catch (...) {
    return {"", "", MakeErrorFromException(std::current_exception())};
  }
}

}  // namespace

/// The commands that a storage was given, each once however often it was given, deleted with their owner.
class OwnedCommands {
 public:
  OwnedCommands() = default;
  OwnedCommands(const OwnedCommands&) = delete;
  OwnedCommands& operator=(const OwnedCommands&) = delete;

  ~OwnedCommands() {
    while (first_ != nullptr) {
      delete std::exchange(first_, first_->next_owned_);
    }
  }

  /// Null is nothing to own.
  void Add(ICommand* command) noexcept {
    if (command != nullptr && !command->owned_) {
      command->owned_ = true;
      command->next_owned_ = std::exchange(first_, command);
    }
  }

 private:
  ICommand* first_ = nullptr;
};

struct TelemetryStorage::State {
  explicit State(DatabasePath resolved)
      : database(std::move(resolved)), connection(database), last_error(connection.OpenError()) {
    // Who asks by its path whether a database is there must find none that may not be opened: nothing lies below a
    // file.
    if (!connection.MayOpen(database.name)) {
      database.path = (std::filesystem::path(database.path) / database.name).string();
    }
  }

  void Adopt(ICommand** list, int count) noexcept;
  Error Run(ICommand* command);
  Error RunAll(ICommand** list, int count);

  DatabasePath database;
  Connection connection;
  OwnedCommands commands;  // go before the connection that they refer to
  Error last_error;
};

void TelemetryStorage::State::Adopt(ICommand** list, int count) noexcept {
  for (int index = 0; index < count; ++index) {
    commands.Add(list[index]);
  }
}

Error TelemetryStorage::State::Run(ICommand* command) {
  if (command == nullptr) {
    return Failure(ResultCode::kMisuse, "no command");
  }
  if (auto* sql_command = dynamic_cast<SqlCommand*>(command); sql_command != nullptr) {
    return sql_command->Run(connection);
  }
  const char* sql = command->GetSqlStatement();
  Rows dropped;
  return connection.Run(sql != nullptr ? sql : "", {}, dropped);
}

Error TelemetryStorage::State::RunAll(ICommand** list, int count) {
  if (count < 0 || (count > 0 && list == nullptr)) {
    return Failure(ResultCode::kMisuse, "no list of commands");
  }
  Adopt(list, count);
  Error result;
  for (int index = 0; index < count && !result.Failed(); ++index) {
    result = Run(list[index]);
  }
  return result;
}

TelemetryStorage::TelemetryStorage(const google::protobuf::Message* contract, const char* /*text*/)
    : state_(std::make_unique<State>(ResolveOrExplain(contract))) {}

TelemetryStorage::TelemetryStorage(const char* database, const char* /*text*/)
    : state_(std::make_unique<State>(ResolveOrExplain(database))) {}

TelemetryStorage::~TelemetryStorage() = default;

Error TelemetryStorage::GetLastError() const { return state_->last_error; }

const char* TelemetryStorage::GetDataBaseName() const { return state_->database.name.c_str(); }

const char* TelemetryStorage::GetDataBasePath() const { return state_->database.path.c_str(); }

Error TelemetryStorage::Execute(ICommand* command, const bool& flag) { return Execute(&command, 1, flag); }

Error TelemetryStorage::Execute(ICommand** commands, const int& count, const bool& /*flag*/) {
  try {
    state_->last_error = state_->RunAll(commands, count);
  } catch (...) {
    state_->last_error = MakeErrorFromException(std::current_exception());
  }
  return state_->last_error;
}

Error TelemetryStorage::CopyTo(const char* file) {
  state_->last_error = state_->connection.CopyTo(file);
  return state_->last_error;
}

}  // namespace corvo::shared
