#pragma once

#include <cstdint>

#include "common/error.h"
#include "storage/storage_export.h"

namespace corvo::shared {

/// SQLite's primary result codes (https://www.sqlite.org/rescode.html). Records of the storage carry the extended code,
/// whose low byte is one of these.
enum class ResultCode : std::int32_t {
  kOk = 0,
  kError = 1,          ///< wrong SQL, a missing table, or a schema that cannot be used
  kInternal = 2,       ///< a fault in SQLite
  kPermission = 3,     ///< access was refused
  kAbort = 4,          ///< rolled back by an earlier failure
  kBusy = 5,           ///< another connection holds the database locked
  kLocked = 6,         ///< this connection holds the table locked
  kNoMemory = 7,       ///< no memory, or the limit on SQLite's memory is reached
  kReadOnly = 8,       ///< the file or its directory must not be written
  kInterrupt = 9,      ///< ended by the time limit or by `InterruptStatements`
  kIoError = 10,       ///< the operating system reported a failure of the disk
  kCorrupt = 11,       ///< the file is damaged
  kNotFound = 12,      ///< an unknown file control
  kFull = 13,          ///< no space on the disk
  kCannotOpen = 14,    ///< the file, its journal or a temporary file cannot be opened
  kProtocol = 15,      ///< a race over the lock of a write-ahead log
  kSchema = 17,        ///< the schema changed while the statement was prepared
  kTooBig = 18,        ///< a value, row, statement or result above its limit
  kConstraint = 19,    ///< a constraint or a trigger of the file refused the change
  kMismatch = 20,      ///< a value of the wrong type
  kMisuse = 21,        ///< a call that makes no sense
  kNoLargeFile = 22,   ///< the system has no files of this size
  kAuth = 23,          ///< the storage refuses to work on this schema
  kRange = 25,         ///< a parameter that the statement does not have
  kNotADatabase = 26,  ///< the file is no SQLite database
  kDone = 101          ///< no row, or no further one, where one was needed
};

// What kind of failure a record reports. False for success and for records that are not about SQLite. Records may be
// asked from any thread; nothing throws.

/// A table that the statement names does not exist. A table that only a trigger or a view of the file names does not
/// count: what the statement was to change is then there, and unchanged.
[[nodiscard]] CORVO_STORAGE_API bool IsMissingTable(const corvo::telemetry::common::Error& record) noexcept;

/// A lock was held longer than the busy timeout.
[[nodiscard]] CORVO_STORAGE_API bool IsBusy(const corvo::telemetry::common::Error& record) noexcept;

/// The file is damaged, or is no SQLite database at all.
[[nodiscard]] CORVO_STORAGE_API bool IsDamaged(const corvo::telemetry::common::Error& record) noexcept;

/// The disk is full.
[[nodiscard]] CORVO_STORAGE_API bool IsFull(const corvo::telemetry::common::Error& record) noexcept;

/// The disk or the operating system failed otherwise.
[[nodiscard]] CORVO_STORAGE_API bool IsIoError(const corvo::telemetry::common::Error& record) noexcept;

/// The file must not be written.
[[nodiscard]] CORVO_STORAGE_API bool IsReadOnly(const corvo::telemetry::common::Error& record) noexcept;

/// The file or one of its side files is missing, is no regular file, or this user may not open it.
[[nodiscard]] CORVO_STORAGE_API bool IsCannotOpen(const corvo::telemetry::common::Error& record) noexcept;

/// The schema holds something that the storage does not work with, such as a table in place of SQLite's statistics.
[[nodiscard]] CORVO_STORAGE_API bool IsRefused(const corvo::telemetry::common::Error& record) noexcept;

/// The statement ran into the time limit, or the host interrupted it.
[[nodiscard]] CORVO_STORAGE_API bool IsInterrupted(const corvo::telemetry::common::Error& record) noexcept;

/// Memory ran out, or the limit on SQLite's memory was reached.
[[nodiscard]] CORVO_STORAGE_API bool IsOutOfMemory(const corvo::telemetry::common::Error& record) noexcept;

/// A value, a row, a statement or a result is above its limit.
[[nodiscard]] CORVO_STORAGE_API bool IsTooBig(const corvo::telemetry::common::Error& record) noexcept;

}  // namespace corvo::shared
