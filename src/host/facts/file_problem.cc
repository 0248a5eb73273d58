#include "host/facts/file_problem.h"

#include <fmt/core.h>

#include <string>
#include <system_error>

#include "common/text.h"
#include "host/platform/access.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDenied = "permission denied";

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

/// Whether the storage library says more than that it cannot open the file.
bool IsExplained(const common::Error& error) { return error.what.find(": ") != std::string::npos; }

/// A file that must not be written can often be read: then it is another reason, which SQLite tells.
bool LacksPermission(const common::Error& error, const fs::path& file, Access access) {
  const bool refused = shared::IsCannotOpen(error) || shared::IsReadOnly(error);
  return refused && !(access == Access::kRead && IsExplained(error)) && !MayReadAndWrite(file);
}

/// A program that was killed left its log, without the index that only who may write can make.
bool LacksIndex(const fs::path& file) {
  fs::path log = RealPath(file);
  fs::path index = log;
  log += "-wal";
  index += "-shm";
  std::error_code unknown;
  return fs::exists(log, unknown) && !fs::exists(index, unknown);
}

/// Where the link leads; empty when the file is there, or is no link.
std::string MissingTarget(const fs::path& file) {
  std::error_code unknown;
  const bool missing = fs::status(file, unknown).type() == fs::file_type::not_found;
  const fs::path target = missing ? fs::read_symlink(file, unknown) : fs::path();
  return unknown && unknown != std::errc::no_such_file_or_directory ? "" : common::Utf8(target);
}

/// Why a file that is there and may be read could not be opened.
Problem CannotOpen(const common::Error& error, const fs::path& file, Access access) {
  using Kind = Problem::Kind;
  using Cause = Problem::Cause;
  if (const std::string target = MissingTarget(file); !target.empty()) {
    return {Kind::kCannotOpen, fmt::format("a link to {}, which is not there", target), error, Cause::kDanglingLink};
  }
  if (IsTooLong(file)) {
    return {Kind::kPathTooLong, "its path is too long for SQLite", error};
  }
  if (!IsExplained(error) && LacksFileHandles()) {
    return {Kind::kCannotOpen, "this program has as many files open as it may", error, Cause::kNoFileHandles};
  }
  const Cause cause = access == Access::kRead && LacksIndex(file) ? Cause::kHalfChanged : Cause::kOther;
  return {Kind::kCannotOpen, ReasonNotToOpen(error, file), error, cause};
}

}  // namespace

fs::path RealPath(const fs::path& file) {
  std::error_code unknown;
  const fs::path real = fs::canonical(file, unknown);
  return unknown ? file : real;
}

Problem NoPermission(const fs::path& file, const common::Error& record) {
  return IsOnReadOnlyFileSystem(file) ? Problem{Problem::Kind::kCannotOpen, "its file system is read-only", record,
                                                Problem::Cause::kReadOnlyFileSystem}
                                      : Problem{Problem::Kind::kCannotOpen, kDenied, record};
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
            error, Problem::Cause::kHalfChanged};
  }
  if (LacksPermission(error, file, access)) {
    return access == Access::kRead ? Problem{Kind::kCannotOpen, kDenied, error} : NoPermission(file, error);
  }
  if (shared::IsCannotOpen(error)) {
    return CannotOpen(error, file, access);
  }
  return shared::IsReadOnly(error) ? Problem{Kind::kCannotOpen, ReasonNotToOpen(error, file), error}
                                   : Problem{Kind::kUnfit, error.what, error};
}

}  // namespace corvo::telemetry::host
