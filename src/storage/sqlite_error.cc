#include "storage/sqlite_error.h"

#include <sqlite3.h>

#include "common/text.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

Error Record(int code, const std::string& what) {
  Error error;
  error.category = telemetry::common::EC_Custom;
  error.code = code;
  // SQLite quotes names from the file as they are; a record must be writable as JSON whatever the file holds.
  error.what = telemetry::common::ValidUtf8(what);
  error.type = "sqlite3";
  return error;
}

}  // namespace

Error SqliteError(sqlite3* handle) { return Record(sqlite3_extended_errcode(handle), sqlite3_errmsg(handle)); }

Error SqliteError(int code, const std::string& detail) {
  return Record(code, std::string(sqlite3_errstr(code)) + ": " + detail);
}

}  // namespace corvo::shared
