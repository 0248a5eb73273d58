#pragma once

#include <string>
#include <vector>

#include "host/facts/directory_state.h"

namespace corvo::telemetry::host {

/// One line for each kind of odd rows in the tables: how many, in how many tables, and one of them.
///
/// @param width the most characters of a line; the sample is cut to fit.
[[nodiscard]] std::vector<std::string> OddRowLines(const std::vector<const TableState*>& tables, std::size_t width);

/// The same for each table that has any, with its name.
[[nodiscard]] std::vector<std::string> OddRowLinesByTable(const std::vector<const TableState*>& tables,
                                                          std::size_t width);

}  // namespace corvo::telemetry::host
