#pragma once

#include <string>

#include "host/show/progress.h"

namespace corvo::telemetry::host {

// What the program says on standard error; who else writes there first calls `ClearProgress`. A stream that takes
// nothing (closed, a full disk) is no reason to fail: the exit code still says how it went.

/// Says something to the person at the terminal, in a line that names the program. From any thread.
void Tell(const std::string& message);

}  // namespace corvo::telemetry::host
