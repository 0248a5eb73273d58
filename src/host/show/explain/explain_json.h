#pragma once

#include <string>

#include "host/facts/explain/explanation.h"

namespace corvo::telemetry::host {

/// The one JSON document of an explanation.
[[nodiscard]] std::string ExplainDocument(const Explanation& explanation);

}  // namespace corvo::telemetry::host
