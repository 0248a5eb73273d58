#include "storage/result_code.h"

#include <sqlite3.h>

#include "storage/connection/failure.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

constexpr bool Is(ResultCode code, int sqlite) { return static_cast<int>(code) == sqlite; }

static_assert(Is(ResultCode::kOk, SQLITE_OK) && Is(ResultCode::kError, SQLITE_ERROR) &&
              Is(ResultCode::kInternal, SQLITE_INTERNAL) && Is(ResultCode::kPermission, SQLITE_PERM) &&
              Is(ResultCode::kAbort, SQLITE_ABORT) && Is(ResultCode::kBusy, SQLITE_BUSY) &&
              Is(ResultCode::kLocked, SQLITE_LOCKED) && Is(ResultCode::kNoMemory, SQLITE_NOMEM) &&
              Is(ResultCode::kReadOnly, SQLITE_READONLY) && Is(ResultCode::kInterrupt, SQLITE_INTERRUPT) &&
              Is(ResultCode::kIoError, SQLITE_IOERR) && Is(ResultCode::kCorrupt, SQLITE_CORRUPT) &&
              Is(ResultCode::kNotFound, SQLITE_NOTFOUND) && Is(ResultCode::kFull, SQLITE_FULL) &&
              Is(ResultCode::kCannotOpen, SQLITE_CANTOPEN) && Is(ResultCode::kProtocol, SQLITE_PROTOCOL) &&
              Is(ResultCode::kSchema, SQLITE_SCHEMA) && Is(ResultCode::kTooBig, SQLITE_TOOBIG) &&
              Is(ResultCode::kConstraint, SQLITE_CONSTRAINT) && Is(ResultCode::kMismatch, SQLITE_MISMATCH) &&
              Is(ResultCode::kMisuse, SQLITE_MISUSE) && Is(ResultCode::kNoLargeFile, SQLITE_NOLFS) &&
              Is(ResultCode::kAuth, SQLITE_AUTH) && Is(ResultCode::kRange, SQLITE_RANGE) &&
              Is(ResultCode::kNotADatabase, SQLITE_NOTADB) && Is(ResultCode::kDone, SQLITE_DONE));

bool Reports(const Error& record, ResultCode code) noexcept {
  return record.Failed() && record.type == kFailureType && (record.code & 0xff) == static_cast<std::int32_t>(code);
}

}  // namespace

bool IsMissingTable(const Error& record) noexcept {
  return record.type == kFailureType && ReportsMissingTable(record.code, record.what);
}

bool IsBusy(const Error& record) noexcept {
  return Reports(record, ResultCode::kBusy) || Reports(record, ResultCode::kLocked);
}

bool IsDamaged(const Error& record) noexcept {
  return Reports(record, ResultCode::kCorrupt) || Reports(record, ResultCode::kNotADatabase);
}

bool IsFull(const Error& record) noexcept { return Reports(record, ResultCode::kFull); }

bool IsIoError(const Error& record) noexcept { return Reports(record, ResultCode::kIoError); }

bool IsReadOnly(const Error& record) noexcept { return Reports(record, ResultCode::kReadOnly); }

bool IsCannotOpen(const Error& record) noexcept {
  return Reports(record, ResultCode::kCannotOpen) || Reports(record, ResultCode::kPermission);
}

bool IsRefused(const Error& record) noexcept { return Reports(record, ResultCode::kAuth); }

bool IsInterrupted(const Error& record) noexcept { return Reports(record, ResultCode::kInterrupt); }

bool IsOutOfMemory(const Error& record) noexcept { return Reports(record, ResultCode::kNoMemory); }

bool IsTooBig(const Error& record) noexcept { return Reports(record, ResultCode::kTooBig); }

}  // namespace corvo::shared
