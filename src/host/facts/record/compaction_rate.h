#pragma once

#include <optional>
#include <vector>

#include "host/facts/record/history.h"

namespace corvo::telemetry::host {

/// How many bytes of a database the newest twenty runs compacted in a second: the median of their newest twenty
/// compactions. Those of less than a twentieth of a second tell of the clock more than of the disk, and do not count.
/// Without any, the rate of the last trial among these runs, so that nobody has to make one in every run.
///
/// @param runs oldest first.
/// @return none when no run has recorded either.
[[nodiscard]] std::optional<double> CompactionRate(const std::vector<RunRecord>& runs);

}  // namespace corvo::telemetry::host
