#pragma once

#include <cstddef>
#include <string>

#include "host/facts/explain/explanation.h"

namespace corvo::telemetry::host {

/// A table, its limits and what they do to it, for people: a table of the limits, and a paragraph for each question.
///
/// @param width of the lines, in columns.
[[nodiscard]] std::string ExplainText(const Explanation& explanation, std::size_t width, bool colour);

}  // namespace corvo::telemetry::host
