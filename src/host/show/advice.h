#pragma once

#include <string>

#include "host/show/json_text.h"

namespace corvo::telemetry::host {

/// What a person can do about a failed pass, as a sentence; empty when there is nothing better than the log.
[[nodiscard]] std::string Advice(const Json& result);

}  // namespace corvo::telemetry::host
