#pragma once

#include <string>

#include "host/facts/record/verification.h"

namespace corvo::telemetry::host {

/// The JSON document of a verification.
[[nodiscard]] std::string VerifyDocument(const Verification& verification);

}  // namespace corvo::telemetry::host
