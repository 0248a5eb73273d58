#pragma once

#include <set>
#include <string>

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

// What the schema of a file may not hold, because a statement would then do something else than it says. All of it is a
// refusal (`IsRefused`) that leaves the file as it is.

/// Refuses a schema with
/// - a table or view called dbstat, in any letter case: it would answer in place of SQLite's page statistics;
/// - a name with a zero byte, of which SQLite sees the first part only, and other readers all of it;
/// - a name that contains SQLite's words for a missing table: quoted in a message, it would turn any failure into a
///   missing table, which counts as clean.
[[nodiscard]] telemetry::common::Error CheckSchema(sqlite3* handle);

/// Refuses tables with an ordinary column called rowid, which hides the row's own rowid: "the smallest rowids" would
/// then mean whatever the column holds. A column that is the rowid (INTEGER PRIMARY KEY) is fine.
[[nodiscard]] telemetry::common::Error CheckRowids(sqlite3* handle, const std::set<std::string>& tables);

}  // namespace corvo::shared
