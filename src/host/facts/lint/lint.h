#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"

namespace corvo::telemetry::host {

/// Something in the catalogue that a pass would make other than its author can have meant.
struct Finding {
  std::string rule;      ///< which rule found it, such as "retention_wraps"; for programs
  std::string database;  ///< as the option spells it; empty when there is none
  std::string table;     ///< empty when it concerns the database as a whole
  std::string text;      ///< what is wrong and what comes of it, without a full stop
};

/// Judges the catalogue by its values alone: first each table, in catalogue order, then each database, in the order of
/// their lower-cased names. Pure.
///
/// @param now in seconds since 1970-01-01 UTC: how far back a retention can reach.
[[nodiscard]] std::vector<Finding> Lint(const CatalogueView& catalogue, std::int64_t now);

}  // namespace corvo::telemetry::host
