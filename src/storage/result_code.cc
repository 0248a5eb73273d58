#include "storage/result_code.h"

#include <sqlite3.h>

#include <string_view>

#include "common/text.h"
#include "storage/failure.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

constexpr const char* kType = "sqlite3";

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
              Is(ResultCode::kNotADatabase, SQLITE_NOTADB));

bool ReportsMissingTable(std::int64_t code, std::string_view what) {
  return code == static_cast<std::int32_t>(ResultCode::kError) && what.starts_with(kMissingTableText);
}

/// Callers take any text with the words for a missing table for one: a message that only quotes them, from a name or a
/// trigger of the file, must not keep them.
std::string WithoutFalseMissingTable(int code, std::string what) {
  if (!ReportsMissingTable(code, what)) {
    for (std::size_t at = what.find(kMissingTableText); at != std::string::npos; at = what.find(kMissingTableText)) {
      what.replace(at, kMissingTableText.size(), "(no such table)");
    }
  }
  return what;
}

Error Record(int code, const std::string& what) {
  Error error;
  error.category = telemetry::common::EC_Custom;
  error.code = code;
  // SQLite quotes names from the file as they are; a record must be writable as JSON whatever the file holds.
  error.what = telemetry::common::ValidUtf8(WithoutFalseMissingTable(code, what));
  error.type = kType;
  return error;
}

bool Reports(const Error& record, ResultCode code) noexcept {
  return record.Failed() && record.type == kType && (record.code & 0xff) == static_cast<std::int32_t>(code);
}

}  // namespace

Error Failure(sqlite3* handle) {
  const int code = sqlite3_extended_errcode(handle);
  const std::string_view what = sqlite3_errmsg(handle);
  // SQLite calls a schema malformed that has a text above the limit: the file is not damaged for that.
  const bool too_big = (code & 0xff) == SQLITE_CORRUPT && what.ends_with(" - string or blob too big");
  return Record(too_big ? SQLITE_TOOBIG : code, std::string(what));
}

Error Failure(ResultCode code, const std::string& detail) { return Failure(static_cast<int>(code), detail); }

Error Failure(int extended_code, const std::string& detail) {
  return Record(extended_code, std::string(sqlite3_errstr(extended_code)) + ": " + detail);
}

bool IsMissingTable(const Error& record) noexcept {
  return record.type == kType && ReportsMissingTable(record.code, record.what);
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
