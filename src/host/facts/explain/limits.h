#pragma once

#include <cstdint>
#include <optional>

#include "host/facts/directory_state.h"

namespace corvo::telemetry::host {

// What the limits of a table come to, by the arithmetic of the rules. Pure.

enum class Rule { kNone, kAge, kRowLimit, kSizeLimit };

/// How long rows are kept, in seconds; 0 is for ever.
[[nodiscard]] std::int64_t KeptSeconds(std::uint32_t retention_days);

/// Whether the row limit can delete anything: 0 cannot, nor can one that the rule's 32 bits do not hold.
[[nodiscard]] bool LimitsRows(std::uint32_t max_rows);

/// The moment after which a pass deletes a row, in seconds since 1970-01-01 UTC as `moment`, the row's own; none when
/// that never comes.
[[nodiscard]] std::optional<std::int64_t> ExpiryMoment(std::int64_t moment, std::uint32_t retention_days);

/// How many days of rows the limits leave a table.
struct Reach {
  std::optional<double> age_days = {};        ///< none: rows do not expire
  std::optional<double> row_limit_days = {};  ///< at today's rate; none: no limit, or no rows come in
  Rule first = Rule::kNone;                   ///< which leaves the fewest; the size limit when it is the only one
};

/// @param size_limited whether the database has a size limit that counts for the table.
[[nodiscard]] Reach ReachOf(const TableState& table, bool size_limited);

/// Where a row stands among the rows of its table that have not expired.
struct RowPlace {
  bool expired = false;
  std::int64_t older = 0;  ///< rows with smaller rowids, which go first
  std::int64_t newer = 0;  ///< rows with larger ones
};

/// The rule by which a pass deletes the row; none when it is kept.
///
/// @param next_pass what the pass deletes from its table.
[[nodiscard]] Rule FateOf(const RowPlace& place, const Deleted& next_pass);

/// How many rows have to come in until the row limit, which is not 0, reaches a row that has not expired; 0 when it
/// already does.
[[nodiscard]] std::int64_t RowsUntilLimit(const RowPlace& place, std::uint32_t max_rows);

}  // namespace corvo::telemetry::host
