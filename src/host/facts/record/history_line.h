#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/facts/record/history.h"

namespace corvo::telemetry::host {

/// The record of a run as one line of JSON, without its end. Long texts are cut, so that it stays below 100,000 bytes.
[[nodiscard]] std::string HistoryLine(const RunRecord& run);

/// The record that a line holds; none when it holds no record, or one with numbers that no run can have come to.
/// Members that are not known are no matter. Sums of what is read fit their types.
[[nodiscard]] std::optional<RunRecord> ReadHistoryLine(std::string_view line);

}  // namespace corvo::telemetry::host
