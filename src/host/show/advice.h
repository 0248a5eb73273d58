#pragma once

#include <string>

#include "common/error.h"

namespace corvo::telemetry::host {

/// What a person can do about a failed pass, as a sentence; empty when there is nothing better than the log.
[[nodiscard]] std::string Advice(const common::Error& failure);

}  // namespace corvo::telemetry::host
