#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Where compaction needs room: beside the database, and where SQLite puts temporary files.
struct CompactionPlaces {
  std::filesystem::path data;
  std::filesystem::path temporary;
};

/// Looks at a database file before a pass: whether it can be opened for writing, is locked, is sound, holds what the
/// rules would misread, and has room to be compacted. Counts its rows. Changes nothing, and waits for a lock no longer
/// than the storage's busy timeout allows, twice at most.
///
/// The verdict on its soundness is remembered by the storage library, so the pass does not read the file again for it.
[[nodiscard]] DatabaseReport LookAtDatabase(const DatabaseView& database, const std::vector<ContractView>& contracts,
                                            const CompactionPlaces& places);

/// The path of the database's file in the directory.
[[nodiscard]] std::filesystem::path DatabaseFile(const DatabaseView& database, const std::filesystem::path& directory);

/// Whether anything has the name of the file; also true when that cannot be found out.
[[nodiscard]] bool HasFile(const std::filesystem::path& file);

/// Counts rows and bytes again, after the run. A database that is busy is not asked twice.
void CountAfterwards(DatabaseReport& database);

}  // namespace corvo::telemetry::host
