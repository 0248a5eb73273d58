#pragma once

#include <string>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// What a run did, for people: a table of databases and tables, a line for each pass when there were several, and the
/// outcome last.
[[nodiscard]] std::string RunText(const RunReport& report, bool colour);

/// How the run went, in one line.
[[nodiscard]] std::string Outcome(const RunReport& report);

}  // namespace corvo::telemetry::host
