#pragma once

#include "host/show/failure.h"

namespace corvo::telemetry::host {

/// `contracts`: shows the catalogue, as a table or as JSON.
ExitCode ContractsCommand(bool json);

}  // namespace corvo::telemetry::host
