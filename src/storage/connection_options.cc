#include "storage/connection_options.h"

#include <sqlite3.h>

#include "storage/sqlite_error.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

struct Setting {
  int id;
  int value;
};

constexpr Setting kSwitches[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    // A trigger or a foreign key of the file could delete rows that no rule names, a view could stand for other tables.
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    {SQLITE_DBCONFIG_ENABLE_FKEY, 0},
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
};

// Limits that no honest database meets. Compaction attaches one database, so none is too few; the schema's own texts
// count against the length of SQL.
constexpr Setting kLimits[] = {
    {SQLITE_LIMIT_LENGTH, 256 * 1024 * 1024},
    {SQLITE_LIMIT_SQL_LENGTH, 1024 * 1024},
    {SQLITE_LIMIT_EXPR_DEPTH, 500},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 1000},
    {SQLITE_LIMIT_ATTACHED, 1},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

// secure_delete: deleted content is overwritten where its page is written anyway, and whole free pages go with the next
// compaction. Set because builds of SQLite differ in their default.
constexpr const char* kPragmas = "PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; PRAGMA secure_delete=FAST;";

}  // namespace

Error SetConnectionOptions(sqlite3* handle) {
  for (const Setting& option : kSwitches) {
    if (sqlite3_db_config(handle, option.id, option.value, nullptr) != SQLITE_OK) {
      return SqliteError(SQLITE_MISUSE, "this build of SQLite lacks a protection");
    }
  }
  for (const Setting& limit : kLimits) {
    sqlite3_limit(handle, limit.id, limit.value);
  }
  return sqlite3_exec(handle, kPragmas, nullptr, nullptr, nullptr) == SQLITE_OK ? Error() : SqliteError(handle);
}

}  // namespace corvo::shared
