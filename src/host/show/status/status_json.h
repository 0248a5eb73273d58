#pragma once

#include <string>

#include "host/facts/directory_state.h"

namespace corvo::telemetry::host {

/// The one JSON document of a status.
[[nodiscard]] std::string StatusDocument(const DirectoryState& state);

}  // namespace corvo::telemetry::host
