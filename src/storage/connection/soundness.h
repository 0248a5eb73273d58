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

/// Looks through the whole file for damage: SQLite's own quick_check
/// (https://www.sqlite.org/pragma.html#pragma_quick_check), whether the entries of the schema are as SQLite writes
/// them, whether each index has as many entries as its table has rows, because a count reads the smallest index, and
/// whether an index that is partial or of an expression says the same as the rows, because SQLite asks it in their
/// place. Costs one reading of the file, a second one of tables with indexes, and for the latter kind a search in the
/// index for each row.
///
/// What quick_check also reports and is no damage passes: pages that belong to nothing, values that break a constraint
/// of their column, a full-text index that is behind its table. Writing to such a file loses nothing.
///
/// @return success; `IsDamaged` with the first finding; or why the file could not be looked through.
[[nodiscard]] telemetry::common::Error FindDamage(sqlite3* handle);

}  // namespace corvo::shared
