#pragma once

#include <string>
#include <vector>

#include "host/facts/explain/explanation.h"

namespace corvo::telemetry::host {

// Parts of the text of an explanation.

/// "9 days", "0.7 days", "1 day".
[[nodiscard]] std::string Days(double days);

/// What becomes of a row of the table, and when its time comes.
[[nodiscard]] std::vector<std::string> RowLines(const RowExplanation& row, const Explanation& explanation);

}  // namespace corvo::telemetry::host
