#pragma once

#include <filesystem>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Counts the rows and sizes of the catalogue's databases in the directory, in catalogue order. Missing files are left
/// out.
[[nodiscard]] std::vector<DatabaseCount> TakeInventory(const CatalogueView& catalogue,
                                                       const std::filesystem::path& directory);

}  // namespace corvo::telemetry::host
