#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/facts/data_directory.h"
#include "host/facts/record/history.h"

namespace corvo::telemetry::host {

/// Runs of a data directory for people, one a line in the order given, and below them what was not cleaned.
[[nodiscard]] std::string HistoryText(const DataDirectory& directory, const std::vector<RunRecord>& runs, bool colour);

/// The same as one JSON document.
[[nodiscard]] std::string HistoryDocument(const DataDirectory& directory, const std::vector<RunRecord>& runs);

}  // namespace corvo::telemetry::host
