#pragma once

#include <string>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// What a person can do about a failure, in sentences.
[[nodiscard]] std::string Advice(const common::Error& failure);

/// What a person can do about a database that was not cleaned; empty when there is nothing to do but to run again.
[[nodiscard]] std::string Advice(const Problem& problem);

}  // namespace corvo::telemetry::host
