#include "host/facts/file_problem.h"

#include <string>

#include "common/text.h"
#include "host/platform/access.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// What the storage library says of a file without what everybody knows by then: "not a regular file" of the database,
/// "HealthLog.db-wal: not a regular file" of a file beside it.
std::string ReasonNotToOpen(const common::Error& error, const fs::path& file) {
  std::string reason = error.what;
  for (const std::string& known : {std::string("unable to open database file: "), common::Utf8(file.parent_path() / ""),
                                   common::Utf8(file.filename()) + ": "}) {
    if (reason.starts_with(known)) {
      reason.erase(0, known.size());
    }
  }
  return reason;
}

/// SQLite's interfaces of the platforms take paths of 512 bytes (mxPathname, https://www.sqlite.org/c3ref/vfs.html),
/// and those of the side files are longer.
bool IsTooLong(const fs::path& file) {
  constexpr std::size_t kLongest = 512;
  return common::Utf8(RealPath(file)).size() + std::string("-journal").size() >= kLongest;
}

/// A file that must not be written can often be read: then it is another reason, which SQLite tells.
bool LacksPermission(const common::Error& error, const fs::path& file, Access access) {
  const bool refused = shared::IsCannotOpen(error) || shared::IsReadOnly(error);
  const bool told = access == Access::kRead && error.what.find(": ") != std::string::npos;
  return refused && !told && !MayReadAndWrite(file);
}

}  // namespace

fs::path RealPath(const fs::path& file) {
  std::error_code unknown;
  const fs::path real = fs::canonical(file, unknown);
  return unknown ? file : real;
}

Problem ProblemOf(const common::Error& error, const fs::path& file, Access access) {
  using Kind = Problem::Kind;
  if (shared::IsBusy(error)) {
    return {Kind::kBusy, "another program holds it locked", error};
  }
  if (shared::IsInterrupted(error)) {
    return shared::StatementsInterrupted()
               ? Problem{Kind::kInterrupted, "interrupted", error}
               : Problem{Kind::kUnfit, "looking at it took longer than the time limit", error};
  }
  if (shared::IsDamaged(error)) {
    return {Kind::kUnfit, "damaged: " + error.what, error};
  }
  if (access == Access::kRead && shared::IsReadOnly(error)) {
    return {Kind::kCannotOpen, "a writer left it in the middle of a change; the next one, or a run, puts it right",
            error};
  }
  if (LacksPermission(error, file, access)) {
    return {Kind::kCannotOpen, "permission denied", error};
  }
  if (shared::IsCannotOpen(error) && IsTooLong(file)) {
    return {Kind::kPathTooLong, "its path is too long for SQLite", error};
  }
  return shared::IsCannotOpen(error) || shared::IsReadOnly(error)
             ? Problem{Kind::kCannotOpen, ReasonNotToOpen(error, file), error}
             : Problem{Kind::kUnfit, error.what, error};
}

}  // namespace corvo::telemetry::host
