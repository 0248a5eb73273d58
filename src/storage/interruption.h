#pragma once

#include "storage/storage_export.h"

namespace corvo::shared {

/// Ends the statements of the process that run now, waiting for a lock included, and each later one as it begins, until
/// `AllowStatements`: they are rolled back, and their result is `IsInterrupted`. A single step of SQLite that began in
/// the same moment runs to its end first.
///
/// For a host that is asked to stop. From any thread; not from a signal handler.
CORVO_STORAGE_API void InterruptStatements() noexcept;

/// Lets statements run again.
CORVO_STORAGE_API void AllowStatements() noexcept;

/// Whether statements are to end.
[[nodiscard]] CORVO_STORAGE_API bool StatementsInterrupted() noexcept;

}  // namespace corvo::shared
