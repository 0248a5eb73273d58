#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/facts/directory_state.h"

namespace corvo::telemetry::host {

/// Into which classes the rows of a table are counted by their age: class `i` holds those of `i` × `days` up to less
/// than (`i` + 1) × `days` days.
struct AgeScale {
  std::int64_t days = 1;     ///< that one class covers, at least 1
  std::int64_t classes = 1;  ///< at least 1
};

/// The rows of a table by their age, every one of them once.
struct RowAges {
  AgeScale scale;
  std::vector<std::int64_t> rows;  ///< in each class, youngest first
  std::int64_t older = 0;          ///< than the last class
  std::int64_t future = 0;         ///< more than a day ahead
  std::int64_t undated = 0;        ///< whose time is no moment to SQLite
};

/// The classes that suit a table: up to somewhat beyond its retention, or its oldest row when there is none; further
/// when there are older rows, but not further than twice the retention or ten years. At most 40, of whole days.
[[nodiscard]] AgeScale ScaleOf(const TableState& table, std::int64_t now);

/// How long the table's contract keeps a row, in seconds, as a pass at `now` reckons; none when no row ever expires.
[[nodiscard]] std::optional<std::int64_t> KeptSeconds(const ContractView& contract, std::int64_t now);

/// Counts the rows of a database's tables by age, all in one transaction, which changes nothing. The storage's options
/// in force decide about waiting and bounds.
///
/// @return for each table in the same order; none where the state tells of a problem or there are no rows, and where
///         they cannot be counted.
[[nodiscard]] std::vector<std::optional<RowAges>> ReadRowAges(const DatabaseState& database, std::int64_t now);

}  // namespace corvo::telemetry::host
