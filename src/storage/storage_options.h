#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "storage/storage_export.h"

namespace corvo::shared {

/// How the storages of a process work. A host sets the options before its first run.
struct StorageOptions {
  /// The directory of the telemetry databases, in the platform's narrow encoding. Empty, the default, is the
  /// environment variable CORVO_TELEMETRY_DATA_DIR, else c:\ProgramData\Corvo\Telemetry\Data\ on Windows and
  /// /var/lib/corvo/telemetry/data/ elsewhere. Costs nothing.
  std::string data_directory;

  /// The file names (HealthLog.db) of the databases that may be opened, exactly as they are asked for; every other one
  /// counts as not openable (`IsCannotOpen`), and the path that it gives is one below its file, where nothing can be.
  /// None, the default, is all of them. For a host that wants a pass to leave databases alone. Costs nothing.
  std::optional<std::set<std::string>> databases;

  /// How long a statement waits for a lock of another connection. A lock held longer is the statement's result
  /// (`IsBusy`), not a reason to try again. Zero or less does not wait; five seconds is the default. Costs what it
  /// waits, asleep.
  std::chrono::milliseconds busy_timeout{5000};

  /// How long one statement may run, the check of the file before it included, before it is ended and rolled back
  /// (`IsInterrupted`). Zero, the default, is without limit. Costs one thread, which serves all statements (on Windows
  /// one short-lived thread a statement).
  std::chrono::milliseconds statement_time_limit{0};

  /// Most bytes that SQLite may hold in the whole process, also in connections of the host's own; a statement that
  /// needs more fails (`IsOutOfMemory`) and is rolled back. Zero, the default, leaves SQLite's limit as it is. Costs
  /// next to nothing: SQLite counts its memory anyway.
  std::int64_t memory_limit = 0;

  /// Whether a file is looked through before the first statement on it, so that nothing is written to a damaged one: a
  /// deletion or a compaction could destroy rows that were still readable, and report success. Costs one reading of the
  /// file; the verdict is remembered for a short time. On by default; off only for a host that has checked the file
  /// itself.
  bool check_soundness = true;

  /// Whether files are opened for reading only: nothing is written to them or beside them, but for the marks of readers
  /// in the index of a write-ahead log that is there already. A statement that would write fails (`IsReadOnly`). Works
  /// in a directory that must not be written. For a host that only looks, also while collectors write. Off by default.
  /// Costs nothing.
  ///
  /// A database in write-ahead mode without a log is read without locks, as nobody has it open; should somebody begin
  /// to write in that moment, the statement is `IsBusy`. A log that a killed program left behind without its index
  /// cannot be read so (`IsCannotOpen`).
  bool read_only = false;

  /// Compaction ("VACUUM;", as a pass sends it) is left out when it would free less than this share of the file's
  /// bytes, in percent from 0 to 100: free pages / pages. It then succeeds without a write, and the observer is told
  /// (`StatementRecord::left_out`). A damaged file still fails. 0, the default, always compacts. Costs nothing: the two
  /// counts stand on the first page.
  ///
  /// For a host that sees to it that what a size limit has trimmed is compacted (`StatementObserver`'s
  /// `MayLeaveOutCompaction`): a pass measures by the file, which only compaction makes smaller, so every further pass
  /// would trim the same tables again.
  double compact_when_free = 0;

  /// Whether bytes that lie unused within pages count for `compact_when_free` as well. Costs one reading of the file.
  /// The share is then the most that compaction could free: it leaves some of them in the pages that it writes. Off by
  /// default.
  bool count_unused_bytes = false;

  /// Compaction that would write more bytes than this, those of the pages in use, is left out likewise, with the same
  /// care for size limits. Each of them is written to a temporary file and then to the database, beside what goes to
  /// the journal. 0, the default, is without limit. Costs as little as `compact_when_free`.
  std::int64_t compaction_limit = 0;

  /// Whether triggers and views of the file work, as SQLite has them. On by default: full-text indexes can be kept by
  /// triggers. Off, nothing is changed but what a statement names, and such indexes go stale. Costs what the triggers
  /// do.
  bool triggers_and_views = true;
};

/// Sets the options of the process: each storage reads them when it is constructed. May be called from any thread. A
/// relative data directory is made absolute at once.
///
/// @throws std::filesystem::filesystem_error when it is relative and there is no current directory.
CORVO_STORAGE_API void SetStorageOptions(const StorageOptions& options);

/// The options in force.
[[nodiscard]] CORVO_STORAGE_API StorageOptions GetStorageOptions();

/// Options for as long as the object lives; then those that were in force before return, on every path.
class CORVO_STORAGE_API StorageOptionsScope {
 public:
  explicit StorageOptionsScope(const StorageOptions& options);
  StorageOptionsScope(const StorageOptionsScope&) = delete;
  StorageOptionsScope& operator=(const StorageOptionsScope&) = delete;
  ~StorageOptionsScope();

 private:
  StorageOptions former_;
};

/// Changes the data directory alone.
CORVO_STORAGE_API void SetDataDirectory(const std::string& directory);

/// The data directory in force, absolute, with a separator at its end. Throws as `SetStorageOptions`.
[[nodiscard]] CORVO_STORAGE_API std::string GetDataDirectory();

}  // namespace corvo::shared
