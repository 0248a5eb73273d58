#pragma once

#include <string>

#include "common/error.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// The one JSON document of a run.
[[nodiscard]] std::string RunDocument(const RunReport& report);

/// The same document for a run that did not begin.
[[nodiscard]] std::string RunDocument(const common::Error& error);

}  // namespace corvo::telemetry::host
