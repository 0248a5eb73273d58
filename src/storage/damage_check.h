#pragma once

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

/// Looks through the whole file for damage: SQLite's own quick_check
/// (https://www.sqlite.org/pragma.html#pragma_quick_check), whether the entries of the schema are as SQLite writes
/// them, and whether each index has as many entries as its table has rows, because a count reads the smallest index.
/// Costs one reading of the file, and a second one of tables with indexes.
///
/// What quick_check also reports and is no damage passes: pages that belong to nothing, values that break a constraint
/// of their column, a full-text index that is behind its table. Writing to such a file loses nothing.
///
/// @return success; `IsDamaged` with the first finding; or why the file could not be looked through.
[[nodiscard]] telemetry::common::Error FindDamage(sqlite3* handle);

}  // namespace corvo::shared
