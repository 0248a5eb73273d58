#include "support/scripted_storage.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "storage/telemetry_storage.h"

namespace corvo::test {
namespace {

ScriptedStorage* current = nullptr;

ScriptedStorage& Script() {
  if (current == nullptr) {
    std::abort();
  }
  return *current;
}

}  // namespace

ScriptedStorage::ScriptedStorage() { current = this; }

ScriptedStorage::~ScriptedStorage() { current = nullptr; }

}  // namespace corvo::test

namespace corvo::shared {

using telemetry::common::Error;
using test::Script;

ICommand::~ICommand() = default;

struct SqlCommand::State {
  std::string sql;
  test::ScriptedStorage::Rows rows;
};

SqlCommand::SqlCommand(const char* statement) : SqlCommand(std::string_view(statement)) {}

SqlCommand::SqlCommand(std::string_view statement) : state_(new State{std::string(statement), {}}) {
  ++Script().live_commands;
}

SqlCommand::~SqlCommand() { --Script().live_commands; }

const char* SqlCommand::GetSqlStatement() const { return state_->sql.c_str(); }

namespace {

DynamicArray<Column> Columns(const std::vector<std::string>& texts) {
  // Two columns more than are counted: reading past the end gives a wrong number, not an accident.
  const std::shared_ptr<Column[]> columns(new Column[texts.size() + 2]);
  const auto end = std::transform(texts.begin(), texts.end(), columns.get(),
                                  [](const std::string& text) { return Column(text.c_str()); });
  std::fill_n(end, 2, Column("1000"));
  return {columns, columns.get(), static_cast<std::int32_t>(texts.size())};
}

}  // namespace

Rows SqlCommand::GetResults() const {
  const std::size_t count = state_->rows.size();
  const std::shared_ptr<DynamicArray<Column>[]> rows(new DynamicArray<Column>[count]);
  std::transform(state_->rows.begin(), state_->rows.end(), rows.get(), Columns);
  return {rows, rows.get(), static_cast<std::int32_t>(count)};
}

// The engine uses none of these.
void SqlCommand::Execute(const char*, bool, const char**, const int&) { std::abort(); }
void SqlCommand::Execute(const char*, const char**, const int&) { std::abort(); }
bool SqlCommand::HasNext() const { std::abort(); }
Error SqlCommand::Next() { std::abort(); }
Error SqlCommand::GetLastError() const { std::abort(); }

struct TelemetryStorage::State {
  explicit State(const std::string& database) {
    Script().opened.push_back(database);
    Script().open(database);
    ++Script().open_storages;
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { --Script().open_storages; }

  Error Run(ICommand* command) {
    commands.emplace_back(command);
    const std::string sql = command->GetSqlStatement();
    Script().statements.push_back(sql);
    Error error = Script().execute(sql);
    if (!error.Failed()) {
      dynamic_cast<SqlCommand&>(*command).state_->rows = Script().rows(sql);
    }
    return error;
  }

  std::vector<std::unique_ptr<ICommand>> commands;
  std::string name;
  std::string path;
};

TelemetryStorage::TelemetryStorage(const google::protobuf::Message* contract, const char* text)
    : state_(new State("contract " + contract->GetDescriptor()->name() + text)) {}

TelemetryStorage::TelemetryStorage(const char* database, const char* text)
    : state_(new State(std::string("file ") + database + text)) {}

TelemetryStorage::~TelemetryStorage() = default;

Error TelemetryStorage::GetLastError() const { return Script().last_error(); }

const char* TelemetryStorage::GetDataBaseName() const {
  state_->name = Script().name();
  return state_->name.c_str();
}

const char* TelemetryStorage::GetDataBasePath() const {
  state_->path = Script().path();
  return state_->path.c_str();
}

Error TelemetryStorage::Execute(ICommand* command, const bool& flag) {
  Script().forms.push_back(std::string("single") + (flag ? " flagged" : ""));
  return state_->Run(command);
}

Error TelemetryStorage::Execute(ICommand** commands, const int& count, const bool& flag) {
  Script().forms.push_back("list of " + std::to_string(count) + (flag ? " flagged" : ""));
  Error error;
  for (int index = 0; index < count && !error.Failed(); ++index) {
    error = state_->Run(commands[index]);
  }
  return error;
}

}  // namespace corvo::shared
