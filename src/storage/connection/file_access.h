#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "common/error.h"

struct sqlite3;
struct sqlite3_vfs;

namespace corvo::shared {

/// What stands under a name; a symbolic link is not followed.
struct FileState {
  enum class Kind { kMissing, kRegular, kOther };

  [[nodiscard]] bool IsSameFile(const FileState& other) const noexcept {
    const bool unknown = file == 0 || other.file == 0;
    return kind == Kind::kRegular && other.kind == kind && (unknown || (volume == other.volume && file == other.file));
  }
  [[nodiscard]] bool IsUnchanged(const FileState& other) const noexcept {
    return IsSameFile(other) && size == other.size && modified == other.modified;
  }

  Kind kind = Kind::kOther;   ///< what cannot be looked at is `kOther`
  std::uint64_t volume = 0;   ///< with `file`, the identity of the file while it exists
  std::uint64_t file = 0;     ///< 0 when it is not known
  std::uint64_t links = 0;    ///< names of the file; 0 when they are not known
  std::uint64_t size = 0;     ///< bytes
  std::int64_t modified = 0;  ///< last change, in the platform's own ticks
};

/// Looks at a name in UTF-8 without opening the file: opening and closing one here would release the locks that other
/// connections of the process hold on it (https://www.sqlite.org/howtocorrupt.html, "Posix advisory locks canceled").
[[nodiscard]] FileState LookAt(const char* name) noexcept;

/// As above, but without so much as a handle, for files that another program may be about to delete: on Windows it
/// could not while somebody looks. Identity and links may stay unknown.
[[nodiscard]] FileState GlanceAt(const char* name) noexcept;

/// What the database of a connection is, under the name that it was opened by.
[[nodiscard]] FileState LookAtOpen(sqlite3* handle, const char* name) noexcept;

/// Looks at what a database path leads to, without opening it, and follows its symbolic links.
///
/// Only a regular file is accepted, with one name unless it is only read, and beside it only regular files with one
/// name under the names of SQLite's side files: opening a FIFO or a device can wait for ever, or do more than read; a
/// second name makes a journal of some other file, and one of the database hides the journal beside it.
///
/// @param resolved the path without symbolic links; unchanged on failure.
telemetry::common::Error CheckDatabaseFile(const std::filesystem::path& path, bool read_only,
                                           std::filesystem::path& resolved);

/// The platform's directory of telemetry databases.
[[nodiscard]] const char* PlatformDataDirectory();

/// The files that one connection may touch: its database, the side files that SQLite keeps beside it, and SQLite's
/// temporary files. A planted journal can name any other file of the system, which SQLite would then read or delete.
///
/// The connection's calls into SQLite are made while a `FileGuard` on this object lives.
struct ConnectionFiles {
  std::string database;           ///< as SQLite names it; set by the first file that is opened
  const char* refusal = nullptr;  ///< why a file was refused, a text that lives for ever; null when none was
  const char* suffix = "";        ///< which side file it was; empty for the database itself
  bool read_only = false;         ///< no side file is made
  bool log_missing = false;       ///< a write-ahead log was needed and is not there; only for reading
};

/// Makes `files` those of the connection that this thread works on for as long as the object lives.
class FileGuard {
 public:
  explicit FileGuard(ConnectionFiles& files) noexcept;
  FileGuard(const FileGuard&) = delete;
  FileGuard& operator=(const FileGuard&) = delete;
  ~FileGuard();

 private:
  ConnectionFiles* former_;
};

/// The files of the connection that this thread works on; null when it works on none. A platform matter, because
/// thread-local data of a library leaks with each unloading where the compiler emulates it.
[[nodiscard]] ConnectionFiles* FilesOfThread() noexcept;
void SetFilesOfThread(ConnectionFiles* files) noexcept;

/// Makes SQLite's own interface of the platform open no FIFO on a thread that is guarded: opening one for reading waits
/// for a writer, and one can be put under the name of a side file between any look and the opening. Other threads, and
/// platforms without FIFOs in the file system, see no difference.
void KeepOpeningFromWaiting(sqlite3_vfs& platform);

/// Takes the above back.
void LetOpeningWait(sqlite3_vfs& platform);

/// Whether SQLite can open the database at this moment: opens it as a connection does and closes it again, without what
/// makes a connection dear. That a connection fails is for it to say.
[[nodiscard]] bool CanOpen(const std::string& name, bool read_only);

/// The name of SQLite's operating-system interface (https://www.sqlite.org/vfs.html) that keeps to `ConnectionFiles`.
/// It stands on the one that is the default when it is asked for; the open files are that one's own, so reading and
/// writing costs nothing more.
[[nodiscard]] const char* GuardedVfs();

}  // namespace corvo::shared
