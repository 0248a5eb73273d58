#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/facts/explain/limits.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

/// One row of a table as the rules see it.
struct TableRow {
  std::int64_t rowid = 0;
  std::string time = {};  ///< as it stands, at most 100 characters; NULL as "NULL", bytes as "x'00ff'"
  std::optional<std::int64_t> moment = {};  ///< that SQLite reads from it, in seconds since 1970-01-01 UTC; none when
                                            ///< it reads none, or one that moves on ("now")
  RowPlace place = {};
};

/// Whether compaction may renumber the rows of a table that has rowids
/// (https://www.sqlite.org/lang_vacuum.html).
common::Error AskWhetherRowidsMayChange(shared::TelemetryStorage& storage, const std::string& table, bool& may);

/// Which row is looked for.
struct RowRequest {
  std::string table;  ///< has rowids
  std::int64_t rowid = 0;
  bool has_time = true;                     ///< the table has a column `time`
  std::optional<std::int64_t> cutoff = {};  ///< moment before which rows are expired; none: rows do not expire
};

/// Finds the row and counts those around it, which reads the table once.
///
/// @param row stays empty when there is no such row.
common::Error FindRow(shared::TelemetryStorage& storage, const RowRequest& request, std::optional<TableRow>& row);

}  // namespace corvo::telemetry::host
