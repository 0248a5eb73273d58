#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/facts/record/database_check.h"

namespace corvo::telemetry::host {

// Whether the databases of a directory are as their last run has promised.

struct Verification {
  std::filesystem::path directory;
  std::string directory_source;               ///< where its name comes from, for people
  std::int64_t now = 0;                       ///< from which ages are counted where no run is recorded
  std::string history_problem = {};           ///< why the record of the runs cannot be read; empty when it can
  std::vector<DatabaseCheck> databases = {};  ///< those asked for that have a file or are recorded, in catalogue order

  [[nodiscard]] bool AnythingBroken() const;

  /// Whether each database could be looked at, and the record of the runs be read.
  [[nodiscard]] bool IsComplete() const;
};

/// Looks at the databases of the directory and changes nothing: each is looked through for damage, and then read in one
/// transaction. The options of the storage in force say that files are opened for reading only, and looked through.
///
/// @param only the databases to look at, as the catalogue spells them; empty: all.
/// @param now in seconds since 1970-01-01 UTC.
[[nodiscard]] Verification Verify(const std::filesystem::path& directory, const std::string& source,
                                  const std::vector<std::string>& only, std::int64_t now);

}  // namespace corvo::telemetry::host
