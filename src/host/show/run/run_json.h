#pragma once

#include <optional>
#include <string>

#include "common/error.h"
#include "host/facts/run_report.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {

/// Rows by the rule that names them.
[[nodiscard]] Json DeletedJson(const Deleted& deleted);

/// Kind, reason, record and advice; null when there is no problem.
[[nodiscard]] Json ProblemJson(const std::optional<Problem>& problem);

/// The one JSON document of a run.
[[nodiscard]] std::string RunDocument(const RunReport& report);

/// The same document for a run that did not begin, or a command that has no answer.
///
/// @param interrupted whether that is because the user ended it early.
[[nodiscard]] std::string RunDocument(const common::Error& error, bool interrupted = false);

}  // namespace corvo::telemetry::host
