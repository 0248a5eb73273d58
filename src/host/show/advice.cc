#include "host/show/advice.h"

#include "host/platform/platform.h"

namespace corvo::telemetry::host {
namespace {

// The storage library passes SQLite's result codes on (https://www.sqlite.org/rescode.html); the low byte is the kind.
const char* StorageAdvice(std::int64_t code) {
  switch (code & 0xff) {
    case 5:  // busy
    case 6:  // locked
      return "Another program holds the database: try again when it has finished.";
    case 3:   // permission
    case 8:   // read-only
    case 14:  // cannot open
    case 23:  // authorisation
      return "Check that this user may read and write the file and its directory.";
    case 11:  // corrupt
    case 26:  // not a database
      return "The file is damaged: move it away, its collector makes a new one.";
    case 10:  // disk I/O
    case 13:  // full
      return "Free some space on the disk and check it: compacting needs room for a copy of the database.";
    default:
      return "See the log (--log-level info) for the statement that failed.";
  }
}

}  // namespace

std::string Advice(const Json& result) {
  if (result.value("type", "") == "sqlite3") {
    return StorageAdvice(result.value("code", std::int64_t{0}));
  }
  const bool named_locale = result.value("what", "").find("locale") != std::string::npos;
  const std::string hint = named_locale ? MissingLocaleHint() : "";
  return hint.empty() ? "See the log (--log-level info) for what led to it." : "Note that " + hint + ".";
}

}  // namespace corvo::telemetry::host
