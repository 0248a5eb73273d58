#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/facts/lint/lint.h"

namespace corvo::telemetry::host {

/// What is doubtful in the catalogue, for people: a paragraph for each finding, or a line that says that there is none.
///
/// @param width of the lines, in columns.
[[nodiscard]] std::string LintText(const CatalogueView& catalogue, const std::vector<Finding>& findings,
                                   std::size_t width, bool colour);

/// The same as one JSON document.
[[nodiscard]] std::string LintDocument(const CatalogueView& catalogue, const std::vector<Finding>& findings);

}  // namespace corvo::telemetry::host
