#pragma once

#include <string>
#include <vector>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// What a run did, for people: a table of databases and tables, a line for each pass when there were several, and the
/// outcome last.
///
/// @param width of the terminal, in columns; 0 when nobody's.
[[nodiscard]] std::string RunText(const RunReport& report, bool colour, int width = 0);

/// What went wrong, what to do about it, and how the run went at last, each in a line of its own.
[[nodiscard]] std::vector<std::string> Failures(const RunReport& report);

}  // namespace corvo::telemetry::host
