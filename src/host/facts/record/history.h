#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

// The record of the last runs of a data directory, a file of the host's own in it: one line of JSON a run. Runs alone
// write it, while they hold the directory's lock.

struct TableRecord {
  std::string table;
  std::optional<std::int64_t> rows_before = {};
  std::optional<std::int64_t> rows_after = {};
  Deleted deleted = {};
  std::optional<std::int64_t> last_rowid = {};  ///< the largest after the run; none when the table was empty
  double seconds = 0;                           ///< of the statements on it
};

struct DatabaseRecord {
  std::string name;
  std::string problem = {};  ///< why it was not cleaned; empty when it was
  std::int64_t bytes_before = 0;
  std::int64_t bytes_after = 0;
  double compaction_seconds = 0;
  std::int64_t compacted_bytes = 0;  ///< that compaction wrote in this time, by the size after the last one
  std::string not_compacted = {};    ///< why compaction was left out on purpose; empty when it was not
  std::vector<TableRecord> tables = {};
};

struct RunRecord {
  std::int64_t start = 0;  ///< seconds since 1970-01-01 UTC
  std::int64_t end = 0;
  double seconds = 0;       ///< of its passes
  std::string result = {};  ///< empty: all was cleaned; else why not
  int signal = 0;           ///< by which the user ended it early; 0 when it ended by itself
  std::vector<DatabaseRecord> databases = {};
  double compaction_rate = 0;        ///< of its trial, in bytes a second; 0: it made none
  bool compaction_optional = false;  ///< options could leave it out

  [[nodiscard]] Deleted DeletedRows() const;
  [[nodiscard]] std::int64_t BytesFreed() const;  ///< negative when the files grew
};

/// What is to be remembered of a run.
[[nodiscard]] RunRecord RecordOf(const RunReport& report);

/// The file's name in the data directory.
inline constexpr const char* kHistoryFile = ".corvo-telemetry-host.history";

/// The most runs that are kept, in about a megabyte; the oldest go first.
inline constexpr std::size_t kMostRuns = 200;

/// Adds a run to the directory's history, synced: a crash leaves the old history or the new, as a line that was not
/// written to its end is none. The file is written anew when it has grown a quarter beyond what is kept.
///
/// @throws std::runtime_error naming the file and the reason when it cannot be written, or is no file that a run can
///         have made (a link, a pipe, another user's); that is left as it is.
void AddToHistory(const std::filesystem::path& directory, const RunRecord& run);

/// The runs of the directory, oldest first; none when there is no file. Lines that are torn or no record are left out.
///
/// @throws std::runtime_error naming the file and the reason when it cannot be read, or is no such file.
[[nodiscard]] std::vector<RunRecord> ReadHistory(const std::filesystem::path& directory);

}  // namespace corvo::telemetry::host
