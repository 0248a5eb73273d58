#include "storage/schema_check.h"

#include <sqlite3.h>

#include <string_view>

#include "storage/failure.h"
#include "storage/statement.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

std::string_view TextOf(sqlite3_stmt* statement, int column) {
  const void* text = sqlite3_column_text(statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return text != nullptr ? std::string_view(static_cast<const char*>(text), size) : std::string_view();
}

bool Is(std::string_view text, const char* word) { return sqlite3_stricmp(std::string(text).c_str(), word) == 0; }

/// What is wrong with a row of the schema, as a text that does not repeat its names; null when nothing is.
const char* FaultOf(std::string_view type, std::string_view name, std::string_view table) {
  for (const std::string_view text : {type, name, table}) {
    if (text.find('\0') != std::string_view::npos) {
      return "the schema has a name with a zero byte";
    }
    if (text.find(kMissingTableText) != std::string_view::npos) {
      return "the schema has a name that reads like an error message";
    }
  }
  const bool answers = Is(type, "table") || Is(type, "view");
  return answers && Is(name, "dbstat") ? "the schema has an object named dbstat" : nullptr;
}

/// Whether a query about a table has a row.
Error HasRow(sqlite3* handle, const char* query, const std::string& table, bool& found) {
  Statement statement;
  Rows rows;
  Error error = Prepare(handle, query, statement);
  if (!error.Failed()) {
    error = Run(statement.get(), {table}, rows);
  }
  found = rows.count > 0;
  return error;
}

}  // namespace

Error CheckSchema(sqlite3* handle) {
  Statement statement;
  if (Error error = Prepare(handle, "SELECT type, name, tbl_name FROM main.sqlite_schema", statement); error.Failed()) {
    return error;
  }
  int code = sqlite3_step(statement.get());
  for (; code == SQLITE_ROW; code = sqlite3_step(statement.get())) {
    const char* fault = FaultOf(TextOf(statement.get(), 0), TextOf(statement.get(), 1), TextOf(statement.get(), 2));
    if (fault != nullptr) {
      return Failure(ResultCode::kAuth, fault);
    }
  }
  return code == SQLITE_DONE ? Error() : Failure(handle);
}

Error CheckRowids(sqlite3* handle, const std::set<std::string>& tables) {
  // Where the primary key is the rowid itself it has no index; a column of a longer key, or of a table without rowids,
  // has.
  constexpr const char* kOrdinaryRowid =
      "SELECT 1 FROM pragma_table_xinfo(?1, 'main') WHERE lower(name) = 'rowid' AND (pk = 0 OR EXISTS "
      "(SELECT 1 FROM pragma_index_list(?1, 'main') WHERE origin = 'pk'))";
  for (const std::string& table : tables) {
    bool found = false;
    if (Error error = HasRow(handle, kOrdinaryRowid, table, found); error.Failed()) {
      return error;
    }
    if (found) {
      return Failure(ResultCode::kAuth,
                     "the table " + table + " has an ordinary column called rowid, which hides the rowid of its rows");
    }
  }
  return {};
}

}  // namespace corvo::shared
