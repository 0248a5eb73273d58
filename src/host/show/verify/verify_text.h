#pragma once

#include <cstddef>
#include <string>

#include "host/facts/record/verification.h"

namespace corvo::telemetry::host {

/// Whether the promises of the last run are kept, for people: a table of databases and promises, what breaks any, and
/// the outcome last.
///
/// @param width in columns, for sentences.
[[nodiscard]] std::string VerifyText(const Verification& verification, std::size_t width, bool colour);

}  // namespace corvo::telemetry::host
