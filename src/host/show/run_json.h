#pragma once

#include <string>

#include "common/error.h"
#include "host/facts/run_report.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {

/// The record as a JSON object, also when its texts are not UTF-8.
[[nodiscard]] Json ErrorJson(const common::Error& error);

/// The one JSON document of a run.
[[nodiscard]] std::string RunDocument(const RunReport& report);

/// The same document for a run that did not begin.
[[nodiscard]] std::string RunDocument(const common::Error& error);

}  // namespace corvo::telemetry::host
