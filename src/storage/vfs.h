#pragma once

#include <string>

struct sqlite3_vfs;

namespace corvo::shared {

/// The files that one connection may touch: its database, the side files that SQLite keeps beside it, and SQLite's
/// temporary files. A planted journal can name any other file of the system, which SQLite would then read or delete.
///
/// The connection's calls into SQLite are made while a `FileGuard` on this object lives.
struct ConnectionFiles {
  std::string database;           ///< as SQLite names it; set by the first file that is opened
  const char* refusal = nullptr;  ///< why a file was refused, a text that lives for ever; null when none was
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

/// Whether this thread works on a connection of this library.
[[nodiscard]] bool IsThreadGuarded() noexcept;

/// Makes SQLite's own interface of the platform open no FIFO on a thread that is guarded: opening one for reading waits
/// for a writer, and one can be put under the name of a side file between any look and the opening. Other threads, and
/// platforms without FIFOs in the file system, see no difference.
void KeepOpeningFromWaiting(sqlite3_vfs& platform);

/// Takes the above back.
void LetOpeningWait(sqlite3_vfs& platform);

/// The name of SQLite's operating-system interface (https://www.sqlite.org/vfs.html) that keeps to `ConnectionFiles`.
/// It stands on the one that is the default when it is asked for; the open files are that one's own, so reading and
/// writing costs nothing more.
[[nodiscard]] const char* GuardedVfs();

}  // namespace corvo::shared
