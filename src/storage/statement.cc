#include "storage/statement.h"

#include <sqlite3.h>

#include <cstring>
#include <string_view>

#include "storage/failure.h"
#include "storage/result_builder.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

bool StartsWith(const char* text, std::string_view start) {
  return std::strncmp(text, start.data(), start.size()) == 0;
}

// Behind the next `end`, or the text's end: like SQLite, an open comment ends there.
const char* Behind(const char* text, std::string_view end) {
  const char* found = std::strstr(text, end.data());
  return found != nullptr ? found + end.size() : text + std::strlen(text);
}

// The first character that is neither blank nor semicolon nor part of a comment, or the text's end.
const char* SkipBlanks(const char* sql) {
  constexpr std::string_view kBlanks = " \t\n\v\f\r;";
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  while (*sql != '\0') {
    if (kBlanks.find(*sql) != std::string_view::npos) {
      ++sql;
    } else if (StartsWith(sql, "--")) {
      sql = Behind(sql, "\n");
    } else if (StartsWith(sql, "/*")) {
      sql = Behind(sql + 2, "*/");
    } else if (StartsWith(sql, kByteOrderMark)) {
      sql += kByteOrderMark.size();
    } else {
      break;
    }
  }
  return sql;
}

/// The failure of a statement. A table that only a trigger or a view of the file names is qualified by SQLite: what the
/// statement was to change is there and stays as it is, which must not pass for a missing table.
Error FailureOf(sqlite3* handle, std::string_view sql) {
  constexpr std::string_view kSchema = "main.";
  Error error = Failure(handle);
  const std::size_t name = kMissingTableText.size() + 1;
  if (IsMissingTable(error) && error.what.compare(name, kSchema.size(), kSchema) == 0 &&
      sql.find(kSchema) == std::string_view::npos) {
    error.what = "the schema names a table that does not exist: " + error.what.substr(name);
  }
  return error;
}

Error Bind(sqlite3_stmt* statement, const Parameters& parameters) {
  int index = 0;
  for (const std::optional<std::string>& text : parameters) {
    ++index;
    const int code = text
                         ? sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_STATIC, SQLITE_UTF8)
                         : sqlite3_bind_null(statement, index);
    if (code != SQLITE_OK) {
      return Failure(sqlite3_db_handle(statement));
    }
  }
  return {};
}

Error Step(sqlite3_stmt* statement, Rows& results) {
  ResultBuilder rows;
  int code = sqlite3_step(statement);
  for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
    if (Error error = rows.Add(statement); error.Failed()) {
      return error;
    }
  }
  if (code != SQLITE_DONE) {
    return FailureOf(sqlite3_db_handle(statement), sqlite3_sql(statement));
  }
  results = rows.Take();
  return {};
}

}  // namespace

void StatementFinalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Error Prepare(sqlite3* handle, const std::string& sql, Statement& statement) {
  if (sql.find('\0') != std::string::npos) {
    return Failure(ResultCode::kMisuse, "the statement holds a zero byte");
  }
  sqlite3_stmt* prepared = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(handle, sql.c_str(), -1, &prepared, &rest);
  statement.reset(prepared);
  if (code != SQLITE_OK) {
    return FailureOf(handle, sql);
  }
  if (prepared == nullptr) {
    return Failure(ResultCode::kMisuse, "no statement");
  }
  return *SkipBlanks(rest) == '\0' ? Error() : Failure(ResultCode::kMisuse, "more than one statement");
}

bool OnlyReads(sqlite3_stmt* statement) { return sqlite3_stmt_readonly(statement) != 0; }

Error Run(sqlite3_stmt* statement, const Parameters& parameters, Rows& results) {
  Error error = Bind(statement, parameters);
  return error.Failed() ? error : Step(statement, results);
}

}  // namespace corvo::shared
