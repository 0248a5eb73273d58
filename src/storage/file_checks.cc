#include "storage/file_checks.h"

#include <sqlite3.h>

#include <string>

#include "storage/sqlite_error.h"
#include "storage/statement.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

// The first value that the query gives, or nothing.
Error FirstValue(sqlite3* handle, const char* query, std::string& value) {
  sqlite3_stmt* prepared = nullptr;
  if (sqlite3_prepare_v2(handle, query, -1, &prepared, nullptr) != SQLITE_OK) {
    return SqliteError(handle);
  }
  const Statement statement(prepared);
  const int code = sqlite3_step(prepared);
  if (code != SQLITE_ROW) {
    return code == SQLITE_DONE ? Error() : SqliteError(handle);
  }
  const void* text = sqlite3_column_text(prepared, 0);
  value = text != nullptr ? static_cast<const char*>(text) : "";
  return {};
}

}  // namespace

Error CheckSchema(sqlite3* handle) {
  std::string name;
  Error error = FirstValue(handle, "SELECT name FROM main.sqlite_schema WHERE lower(name) = 'dbstat'", name);
  if (!error.Failed() && !name.empty()) {
    error = SqliteError(SQLITE_AUTH, "the schema has an object named " + name);
  }
  return error;
}

Error CheckBeforeCompaction(sqlite3* handle) {
  // Rows that break a CHECK constraint are the user's business and no damage, but quick_check reports them alike.
  sqlite3_exec(handle, "PRAGMA ignore_check_constraints=ON", nullptr, nullptr, nullptr);
  std::string answer;
  Error error = FirstValue(handle, "PRAGMA main.quick_check(1)", answer);
  sqlite3_exec(handle, "PRAGMA ignore_check_constraints=OFF", nullptr, nullptr, nullptr);
  if (!error.Failed() && answer != "ok") {
    error = SqliteError(SQLITE_CORRUPT, answer);
  }
  return error;
}

}  // namespace corvo::shared
