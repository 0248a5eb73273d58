#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/facts/lint/lint.h"

namespace corvo::telemetry::host {

// The two halves of `Lint`, and what they have in common.

/// What is wrong with single tables.
[[nodiscard]] std::vector<Finding> LintTables(const CatalogueView& catalogue, std::int64_t now);

/// What is wrong with databases, and between their tables.
[[nodiscard]] std::vector<Finding> LintDatabases(const CatalogueView& catalogue);

/// The name with the letters of ASCII in lower case: SQL does not tell tables apart by case, nor a pass databases.
[[nodiscard]] std::string WithoutCase(std::string name);

/// The limit that the message of the database gives, which is found by the exact name; 0 when there is none.
[[nodiscard]] std::uint32_t DatabaseLimit(const std::vector<DatabaseView>& databases, const std::string& name);

}  // namespace corvo::telemetry::host
