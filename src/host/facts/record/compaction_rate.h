#pragma once

#include <optional>
#include <vector>

#include "host/facts/record/history.h"

namespace corvo::telemetry::host {

/// How many bytes of a database the recorded runs compacted in a second: the median of the newest twenty compactions.
/// Those of less than a twentieth of a second tell of the clock more than of the disk, and do not count. Without any,
/// the rate that a run went by last, so that nobody has to find it out in every run.
///
/// @param runs oldest first.
/// @return none when no run has recorded either.
[[nodiscard]] std::optional<double> CompactionRate(const std::vector<RunRecord>& runs);

}  // namespace corvo::telemetry::host
