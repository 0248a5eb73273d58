#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"

namespace corvo::telemetry::host {

struct LiveRequest {
  std::filesystem::path directory;  ///< absolute
  int seconds = 0;                  ///< how long to write
  int rate = 0;                     ///< rows a second, over all tables
  std::uint64_t seed = 0;           ///< of the values
  bool show_progress = false;       ///< a person watches standard error
};

/// A database that nothing more was written to.
struct LiveProblem {
  std::string database;
  std::string reason;
};

/// What was written.
struct LiveResult {
  double seconds = 0;
  std::int64_t rows = 0;
  std::int64_t waits = 0;  ///< how often the lock of another program put a batch off
  std::vector<LiveProblem> problems = {};
};

/// Whether the directory has something under the name of a database of the catalogue.
[[nodiscard]] bool HoldsDatabases(const std::filesystem::path& directory, const CatalogueView& catalogue);

/// Keeps adding rows of this moment to the tables of the catalogue that the directory has, some at a time, each
/// database in a small transaction, as collectors do. Schemas and journal modes stay, and nothing is created. What
/// another program holds locked is written later; databases and tables may go away and come back. A database that
/// cannot be written for another reason is left alone from then on.
///
/// Ends when the time is over, when nothing is left to write to for such reasons, or when the user interrupts it.
[[nodiscard]] LiveResult WriteLive(const CatalogueView& catalogue, const LiveRequest& request);

}  // namespace corvo::telemetry::host
