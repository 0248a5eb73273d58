#pragma once

#include <string>
#include <vector>

#include "host/facts/directory_state.h"
#include "host/show/fitting_table.h"

namespace corvo::telemetry::host {

/// The databases that have a file, each with a bar of its size against its limit; those that cannot be read with the
/// size alone.
[[nodiscard]] std::string DatabaseTable(const DirectoryState& state, const Display& display);

/// Tables with bars of their rows and of the age of the oldest against their limits.
///
/// @param forecast whether to tell what the next run would take of each.
[[nodiscard]] std::string TableTable(const std::vector<const TableState*>& tables, std::int64_t now, bool forecast,
                                     const Display& display);

/// How much of its row limit a table has used up, or of its retention when it is over that: above 1 is over a limit.
[[nodiscard]] double UsedUp(const TableState& table, std::int64_t now);

}  // namespace corvo::telemetry::host
