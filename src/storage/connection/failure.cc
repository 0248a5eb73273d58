#include "storage/connection/failure.h"

#include <sqlite3.h>

#include "common/text.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

/// Callers take any text with the words for a missing table for one: a message that only quotes them, from a name or a
/// trigger of the file, must not keep them.
std::string WithoutFalseMissingTable(int code, std::string what) {
  if (!ReportsMissingTable(code, what)) {
    for (std::size_t at = what.find(kMissingTableText); at != std::string::npos; at = what.find(kMissingTableText)) {
      what.replace(at, kMissingTableText.size(), "(no such table)");
    }
  }
  return what;
}

Error Record(int code, const std::string& what) {
  Error error;
  error.category = telemetry::common::EC_Custom;
  error.code = code;
  // SQLite quotes names from the file as they are; a record must be writable as JSON whatever the file holds.
  error.what = telemetry::common::ValidUtf8(WithoutFalseMissingTable(code, what));
  error.type = kFailureType;
  return error;
}

}  // namespace

bool ReportsMissingTable(std::int64_t code, std::string_view what) noexcept {
  return code == static_cast<std::int32_t>(ResultCode::kError) && what.starts_with(kMissingTableText);
}

Error Failure(sqlite3* handle) {
  const int code = sqlite3_extended_errcode(handle);
  const std::string_view what = sqlite3_errmsg(handle);
  // SQLite calls a schema malformed that is above a limit of this library: the file is not damaged for that.
  const bool too_big =
      (code & 0xff) == SQLITE_CORRUPT && (what.ends_with(" - string or blob too big") ||
                                          what.find(" - Expression tree is too large") != std::string_view::npos);
  // Interrupted while it reads the schema for a statement, SQLite says so as of wrong SQL.
  const bool interrupted = code == SQLITE_ERROR && what == sqlite3_errstr(SQLITE_INTERRUPT);
  return Record(too_big ? SQLITE_TOOBIG : interrupted ? SQLITE_INTERRUPT : code, std::string(what));
}

Error Failure(ResultCode code, const std::string& detail) { return Failure(static_cast<int>(code), detail); }

Error Failure(int extended_code, const std::string& detail) {
  return Record(extended_code, std::string(sqlite3_errstr(extended_code)) + ": " + detail);
}

}  // namespace corvo::shared
