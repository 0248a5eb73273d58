#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "framework/plugin_module.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/run_report.h"
#include "host/pass/stall_limit.h"

namespace corvo::telemetry::host {

/// What a run of a directory is to do.
struct DirectoryRun {
  std::filesystem::path directory;  ///< absolute
  std::string source;               ///< where its name comes from, for people
  std::filesystem::path room = {};  ///< the directory whose room compaction needs; empty: the directory itself
  std::vector<std::string> only;    ///< the databases to clean, as the catalogue spells them; empty: all
  int passes = 1;
  StallLimit stall = {};       ///< by which compaction is left out, where the storage's options say so
  bool keep_going = false;     ///< each database in a pass of its own
  bool show_progress = false;  ///< a person watches standard error
};

/// The databases that a run is for and that have a file, in the catalogue's order.
[[nodiscard]] std::vector<DatabaseView> DatabasesOf(const DirectoryRun& run, const CatalogueView& catalogue);

/// Looks at the databases of the directory, lets the module clean those that can be cleaned, and looks again.
///
/// A database with a problem is left alone: the storage library does not let the module open it, and it is reported
/// with the reason. A database counts as cleaned only when each statement on it succeeded and it was compacted. The
/// storage's options are in force when this is called. Ends early, with what is known, when statements are interrupted.
[[nodiscard]] RunReport Run(shared::plugin::IDynamicPluginModule& module, const DirectoryRun& run);

/// Whether the pass may have changed the database, so that it was looked at again.
[[nodiscard]] bool WasOpened(const DatabaseReport& database);

}  // namespace corvo::telemetry::host
