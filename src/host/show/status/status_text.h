#pragma once

#include <string>

#include "host/facts/directory_state.h"
#include "host/show/fitting_table.h"

namespace corvo::telemetry::host {

/// How the databases stand against their limits, for people: as many tables as fit 23 lines, those first that are over
/// a limit or come nearest to their row limit.
///
/// @param all every table instead, and the odd rows of each.
[[nodiscard]] std::string StatusText(const DirectoryState& state, bool all, const Display& display);

}  // namespace corvo::telemetry::host
