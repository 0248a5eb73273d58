#include "storage/connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "common/text.h"
#include "storage/connection_options.h"
#include "storage/database_file.h"
#include "storage/file_checks.h"
#include "storage/result_rows.h"
#include "storage/sql_text.h"
#include "storage/sqlite_error.h"
#include "storage/statement.h"
#include "storage/statement_observer.h"
#include "storage/storage_settings.h"

namespace corvo::shared {
namespace {

using std::chrono::steady_clock;
using telemetry::common::Error;

// Virtual machine steps between two looks at the clock, well below a millisecond.
constexpr int kStepsBetweenLooks = 10'000;

Error Prepare(sqlite3* handle, const char* sql, Statement& statement) {
  sqlite3_stmt* prepared = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(handle, sql, -1, &prepared, &rest);
  statement.reset(prepared);
  if (code != SQLITE_OK) {
    return SqliteError(handle);
  }
  if (prepared == nullptr) {
    return SqliteError(SQLITE_MISUSE, "no statement");
  }
  return *SkipBlanks(rest) == '\0' ? Error() : SqliteError(SQLITE_MISUSE, "more than one statement");
}

Error Bind(sqlite3_stmt* statement, const Parameters& parameters) {
  int index = 0;
  for (const std::optional<std::string>& text : parameters) {
    ++index;
    const int code = text
                         ? sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_STATIC, SQLITE_UTF8)
                         : sqlite3_bind_null(statement, index);
    if (code != SQLITE_OK) {
      return SqliteError(sqlite3_db_handle(statement));
    }
  }
  return {};
}

Error Step(sqlite3_stmt* statement, Results& results) {
  ResultRows rows;
  int code = sqlite3_step(statement);
  for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
    if (Error error = rows.Add(statement); error.Failed()) {
      return error;
    }
  }
  if (code != SQLITE_DONE) {
    return SqliteError(sqlite3_db_handle(statement));
  }
  results = rows.Take();
  return {};
}

int Milliseconds(std::chrono::milliseconds time) {
  return static_cast<int>(std::clamp<std::int64_t>(time.count(), 0, std::numeric_limits<int>::max()));
}

}  // namespace

Connection::Connection(const DatabasePath& database)
    : path_(database.path),
      open_error_(database.error),
      compaction_guard_(GetCompactionGuard()),
      time_limit_(GetStatementTimeLimit()) {
  if (!open_error_.Failed()) {
    open_error_ = Open();
  }
}

Connection::~Connection() { sqlite3_close(handle_); }

Error Connection::Open() {
  std::filesystem::path file;
  if (Error error = CheckDatabaseFile(path_, file); error.Failed()) {
    return error;
  }
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW;
  if (sqlite3_open_v2(telemetry::common::Utf8(file).c_str(), &handle_, kFlags, nullptr) != SQLITE_OK) {
    return SqliteError(handle_);
  }
  sqlite3_busy_timeout(handle_, Milliseconds(GetBusyTimeout()));
  if (time_limit_.count() > 0) {
    sqlite3_progress_handler(handle_, kStepsBetweenLooks, &Connection::IsOverdue, this);
  }
  return SetConnectionOptions(handle_);
}

int Connection::IsOverdue(void* connection) {
  const auto* self = static_cast<const Connection*>(connection);
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - self->started_);
  return elapsed >= self->time_limit_ ? 1 : 0;
}

std::int64_t Connection::TotalChanges() const { return handle_ != nullptr ? sqlite3_total_changes64(handle_) : 0; }

Error Connection::Run(const char* sql, const Parameters& parameters, Results& results) noexcept {
  const std::shared_ptr<StatementObserver> observer = GetStatementObserver();
  if (observer == nullptr) {
    return RunUnseen(sql, parameters, results);
  }
  const auto start = steady_clock::now();
  observer->OnStart({path_.c_str(), sql, start, start, 0, Error()});
  // Of the connection, not of the statement: a query leaves an earlier statement's count where it is.
  const std::int64_t before = TotalChanges();
  Error result = RunUnseen(sql, parameters, results);
  observer->OnEnd({path_.c_str(), sql, start, steady_clock::now(), TotalChanges() - before, result});
  return result;
}

Error Connection::RunUnseen(const char* sql, const Parameters& parameters, Results& results) noexcept {
  results = Results();
  try {
    started_ = steady_clock::now();
    return RunChecked(sql, parameters, results);
  } catch (...) {
    return telemetry::common::MakeErrorFromException(std::current_exception());
  }
}

Error Connection::RunChecked(const char* sql, const Parameters& parameters, Results& results) {
  if (open_error_.Failed()) {
    return open_error_;
  }
  if (Error error = CheckSchemaOnce(); error.Failed()) {
    return error;
  }
  Statement statement;
  if (Error error = Prepare(handle_, sql, statement); error.Failed()) {
    return error;
  }
  if (compaction_guard_ && IsVacuum(sql)) {
    if (Error error = CheckBeforeCompaction(handle_); error.Failed()) {
      return error;
    }
  }
  if (Error error = Bind(statement.get(), parameters); error.Failed()) {
    return error;
  }
  return Step(statement.get(), results);
}

Error Connection::CheckSchemaOnce() {
  if (schema_checked_) {
    return {};
  }
  Error error = CheckSchema(handle_);
  schema_checked_ = !error.Failed();
  return error;
}

}  // namespace corvo::shared
