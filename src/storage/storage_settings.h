#pragma once

#include <chrono>
#include <string>

#include "storage/storage_export.h"

namespace corvo::shared {

// Settings of the storage library for the whole process. A host sets them before its first run; each storage reads
// them when it is constructed. All of them may be called from any thread.

/// The directory of the telemetry databases, in the platform's narrow encoding; a relative one is made absolute at
/// once. An empty text returns to the default: the environment variable CORVO_TELEMETRY_DATA_DIR, else
/// c:\ProgramData\Corvo\Telemetry\Data\ on Windows and /var/lib/corvo/telemetry/data/ elsewhere.
///
/// @throws std::filesystem::filesystem_error when a relative directory is given and there is no current directory.
CORVO_STORAGE_API void SetDataDirectory(const std::string& directory);

/// The directory in force, absolute, with a separator at its end. Throws as above.
[[nodiscard]] CORVO_STORAGE_API std::string GetDataDirectory();

/// How long a statement waits for a lock held by another connection; 5 s by default. A lock held longer is the
/// statement's result (SQLITE_BUSY), not a reason to try again. Zero or less does not wait.
CORVO_STORAGE_API void SetBusyTimeout(std::chrono::milliseconds timeout);
[[nodiscard]] CORVO_STORAGE_API std::chrono::milliseconds GetBusyTimeout();

/// How long one statement may run before it is ended with SQLITE_INTERRUPT; zero, the default, is without limit.
CORVO_STORAGE_API void SetStatementTimeLimit(std::chrono::milliseconds limit);
[[nodiscard]] CORVO_STORAGE_API std::chrono::milliseconds GetStatementTimeLimit();

/// Whether a file is checked before it is compacted; on by default. Compacting a damaged file can lose rows that were
/// still readable, and report success.
CORVO_STORAGE_API void SetCompactionGuard(bool on);
[[nodiscard]] CORVO_STORAGE_API bool GetCompactionGuard();

}  // namespace corvo::shared
