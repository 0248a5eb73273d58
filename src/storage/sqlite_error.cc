#include "storage/sqlite_error.h"

#include <sqlite3.h>

#include <nlohmann/json.hpp>

namespace corvo::shared {
namespace {

using telemetry::common::Error;

// SQLite quotes names from the file as they are. A record must be writable as JSON whatever the file holds, so every
// invalid byte becomes U+FFFD.
std::string ValidUtf8(const std::string& text) {
  using nlohmann::json;
  return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
}

Error Record(int code, const std::string& what) {
  Error error;
  error.category = telemetry::common::EC_Custom;
  error.code = code;
  error.what = ValidUtf8(what);
  error.type = "sqlite3";
  return error;
}

}  // namespace

Error SqliteError(sqlite3* handle) { return Record(sqlite3_extended_errcode(handle), sqlite3_errmsg(handle)); }

Error SqliteError(int code, const std::string& detail) {
  return Record(code, std::string(sqlite3_errstr(code)) + ": " + detail);
}

}  // namespace corvo::shared
