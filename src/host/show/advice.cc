#include "host/show/advice.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "host/platform/platform.h"
#include "storage/result_code.h"

namespace corvo::telemetry::host {
namespace {

struct Kind {
  bool (*applies)(const common::Error& failure) noexcept;
  const char* advice;
};

constexpr std::int64_t kPrimary = 0xff;

bool IsNoDatabase(const common::Error& failure) noexcept {
  return failure.type == "sqlite3" && (failure.code & kPrimary) == static_cast<int>(shared::ResultCode::kNotADatabase);
}

/// Of a table or a trigger of the file.
bool RefusesTheChange(const common::Error& failure) noexcept {
  return failure.type == "sqlite3" && (failure.code & kPrimary) == static_cast<int>(shared::ResultCode::kConstraint);
}

// No advice throws a file away that may still hold something.
const std::array<Kind, 12>& Kinds() {
  static const std::array<Kind, 12> kinds = {{
      {shared::IsBusy,
       "Another program holds the database: try again when it has finished, or wait longer for it (--busy-timeout)."},
      {shared::IsReadOnly, "Check that this user may read and write the file and its directory."},
      {shared::IsCannotOpen,
       "Check that the file and those beside it are ordinary files with one name each, and that this user may read and "
       "write them. A journal that belongs to several databases is for the program that wrote it: let that open them."},
      {shared::IsRefused,
       "The file's schema holds something that no collector should make; the file stays as it is. Find out who put it "
       "there. To do without the file, stop its collector, keep a copy and move it away with its -journal, -wal and "
       "-shm: its collector makes a new one."},
      {IsNoDatabase,
       "The file is no SQLite database, or an encrypted one, and stays as it is. Find out who wrote it. To do without "
       "it, stop its collector, keep a copy and move it away with its -journal, -wal and -shm: its collector makes a "
       "new one."},
      {shared::IsDamaged,
       "The file is damaged and not written any more. Stop its collector. Keep a copy of it with its -journal, -wal "
       "and -shm. Where an index alone is named, sqlite3 FILE REINDEX can mend it. Else the rows that can still be "
       "read "
       "come out of the copy as SQL with sqlite3 COPY .recover, or .dump where that gives none. Then move the file "
       "away "
       "with those three: its collector makes a new one."},
      {shared::IsFull, "Free some space on the disk: compacting needs room for a copy of the database."},
      {shared::IsIoError,
       "Check the disk and free some space on it: compacting needs room for a copy of the database."},
      {shared::IsInterrupted,
       "A statement took longer than --time-limit allows and was rolled back: allow it more seconds (0: any number)."},
      {shared::IsOutOfMemory,
       "A statement needed more memory than --memory-limit or the machine allows and was rolled back: allow more MB "
       "(0: any number) if you trust the file."},
      {shared::IsTooBig,
       "The file holds a row, an index entry or a text of its schema that is larger than this program works on; it "
       "stays as it is. Find out who wrote it."},
      {RefusesTheChange,
       "A rule of the file itself, a constraint or a trigger, refuses the change; what was to go stays. Find out who "
       "made it."},
  }};
  return kinds;
}

constexpr const char* kNothingKnown =
    "This program knows no remedy. Where a pass met it, a run with --log-level debug logs each statement until then.";

std::string OtherAdvice(const common::Error& failure) {
  const bool named_locale = failure.what.find("locale") != std::string::npos;
  const std::string hint = named_locale ? MissingLocaleHint() : "";
  return hint.empty() ? kNothingKnown : "Note that " + hint + ".";
}

std::string AdviceByCause(Problem::Cause cause) {
  switch (cause) {
    case Problem::Cause::kDanglingLink:
      return "Bring back what the link leads to, such as a disk that is not mounted, or remove the link.";
    case Problem::Cause::kHalfChanged:
      return "A run, or the next program that writes to the database, puts it right.";
    case Problem::Cause::kReadOnlyFileSystem:
      return "Make the file system writable.";
    case Problem::Cause::kNoFileHandles:
      return "Let this program have more files open (ulimit -n).";
    case Problem::Cause::kNoRoomBeside:
      return "Free some space there: compacting needs it beside the database.";
    case Problem::Cause::kOther:
      break;
  }
  return "";
}

}  // namespace

std::string Advice(const common::Error& failure) {
  for (const Kind& kind : Kinds()) {
    if (kind.applies(failure)) {
      return kind.advice;
    }
  }
  return OtherAdvice(failure);
}

std::string Advice(const Problem& problem) {
  if (std::string advice = AdviceByCause(problem.cause); !advice.empty()) {
    return advice;
  }
  switch (problem.kind) {
    case Problem::Kind::kNoRoom:
      return "Free some space there, or name another place for SQLite's temporary files (environment variable "
             "SQLITE_TMPDIR).";
    case Problem::Kind::kPathTooLong:
      return "Keep the databases in a folder with a shorter path.";
    case Problem::Kind::kCannotOpen:
      return problem.record.Failed() ? Advice(problem.record)
                                     : "Check that this user may read and write the file and its directory.";
    case Problem::Kind::kFailed:
      return problem.record.Failed() ? Advice(problem.record) : "";
    case Problem::Kind::kNotReached:
    case Problem::Kind::kInterrupted:
      return "";
    default:
      break;
  }
  if (problem.record.Failed()) {
    return Advice(problem.record);
  }
  return "The table is none that a pass can work on; the database stays as it is. Keep a copy of its rows, and let its "
         "collector make the table anew.";
}

}  // namespace corvo::telemetry::host
