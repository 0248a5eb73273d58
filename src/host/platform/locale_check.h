#pragma once

#include <string>

namespace corvo::telemetry::host {

/// One line on the named locale that a pass needs and this machine lacks, with the command that installs it; empty when
/// nothing is missing.
[[nodiscard]] std::string MissingLocaleHint();

}  // namespace corvo::telemetry::host
