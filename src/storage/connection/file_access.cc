#include "storage/connection/file_access.h"

#include <sqlite3.h>

#include <array>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/text.h"
#include "storage/connection/failure.h"
#include "storage/telemetry_storage.h"

namespace corvo::shared {
namespace {

using std::filesystem::file_type;
using telemetry::common::Error;

Error Refusal(int code, const std::filesystem::path& path, const std::string& reason) {
  return Failure(code, telemetry::common::Utf8(path) + ": " + reason);
}

constexpr const char* kNotRegular = "not a regular file";
constexpr const char* kLinked = "a file with several links";
// https://www.sqlite.org/howtocorrupt.html, "Multiple links to the same file": rows in the log of another name would be
// lost.
constexpr const char* kSeveralNames = "a file with several names: its journal or log may lie beside another of them";
constexpr const char* kLogOfNothing = "a log beside an empty database, which goes when somebody opens it for writing";
constexpr const char* kSwapped = "replaced while it was opened";
constexpr const char* kNoIndex = "a log without its index, which a program that may write has to make first";
constexpr const char* kForeign = "no other file may be opened beside it";
constexpr const char* kSeveralDatabases =
    "its journal belongs to a transaction over several databases, which must not be undone in one of them alone";

/// Why a file must not be opened, or null. A missing one may be made.
const char* Fault(const FileState& state, bool side_file) {
  if (state.kind == FileState::Kind::kMissing) {
    return nullptr;
  }
  if (state.kind != FileState::Kind::kRegular) {
    return kNotRegular;
  }
  return side_file && state.links > 1 ? kLinked : nullptr;
}

// The side files of a database that SQLite opens on its own.
Error CheckSideFiles(const std::filesystem::path& file) {
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    std::filesystem::path side_file = file;
    side_file += suffix;
    const std::string name = telemetry::common::Utf8(side_file);
    // A journal comes and goes with every transaction of a collector.
    const FileState state = name.ends_with("-journal") ? GlanceAt(name.c_str()) : LookAt(name.c_str());
    if (const char* fault = Fault(state, true); fault != nullptr) {
      return Refusal(SQLITE_CANTOPEN, side_file, fault);
    }
  }
  return {};
}

/// Our interface over the one that was the default when it was made: a copy with a few functions of our own.
struct Guarded : sqlite3_vfs {
  explicit Guarded(sqlite3_vfs& below);

  std::string name;
  sqlite3_vfs* real;
};

sqlite3_vfs* Real(sqlite3_vfs* vfs) { return static_cast<Guarded*>(vfs)->real; }

int Refuse(const char* reason, int code, const char* suffix = "") {
  ConnectionFiles* const current = FilesOfThread();
  if (current != nullptr) {
    current->refusal = reason;
    current->suffix = suffix;
  }
  return code;
}

bool IsDatabase(std::string_view name) {
  const ConnectionFiles* const current = FilesOfThread();
  return current != nullptr && name == current->database;
}

bool IsSideFile(std::string_view name) {
  const ConnectionFiles* const current = FilesOfThread();
  if (current == nullptr || current->database.empty() || !name.starts_with(current->database)) {
    return false;
  }
  const std::string_view suffix = name.substr(current->database.size());
  return suffix == "-journal" || suffix == "-wal" || suffix == "-shm";
}

/// Whether a journal that is not finished ends with the name of a super-journal. The name may be that of a side file,
/// so what SQLite asks for does not tell it (https://www.sqlite.org/fileformat.html#the_rollback_journal).
bool NamesSuperJournal(sqlite3_file* journal) {
  constexpr std::array<unsigned char, 8> kMagic = {0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};
  sqlite3_int64 size = 0;
  unsigned char first = 0;
  std::array<unsigned char, kMagic.size()> last{};
  return journal->pMethods->xFileSize(journal, &size) == SQLITE_OK && size > static_cast<int>(last.size()) &&
         journal->pMethods->xRead(journal, &first, 1, 0) == SQLITE_OK && first != 0 &&
         journal->pMethods->xRead(journal, last.data(), static_cast<int>(last.size()),
                                  size - static_cast<int>(last.size())) == SQLITE_OK &&
         last == kMagic;
}

const char* SuffixOf(int flags) {
  if ((flags & SQLITE_OPEN_WAL) != 0) {
    return "-wal";
  }
  return (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0 ? "-journal" : "";
}

/// Opens a file between two looks at it, so that one that was exchanged in between is never read or written.
int OpenBetweenLooks(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out_flags) {
  const bool side_file = (flags & SQLITE_OPEN_MAIN_DB) == 0;
  const FileState before = GlanceAt(name);
  if (const char* fault = Fault(before, side_file); fault != nullptr) {
    return Refuse(fault, SQLITE_CANTOPEN, SuffixOf(flags));
  }
  const int code = Real(vfs)->xOpen(Real(vfs), name, file, flags, out_flags);
  if (code != SQLITE_OK) {
    return code;
  }
  const FileState after = side_file ? LookAt(name) : GlanceAt(name);
  const bool same = before.kind == FileState::Kind::kMissing || before.IsSameFile(after);
  const char* fault = same ? Fault(after, side_file) : kSwapped;
  if (fault == nullptr && (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0 && NamesSuperJournal(file)) {
    fault = kSeveralDatabases;
  }
  if (fault != nullptr) {
    file->pMethods->xClose(file);
    file->pMethods = nullptr;
    return Refuse(fault, SQLITE_CANTOPEN, SuffixOf(flags));
  }
  return SQLITE_OK;
}

/// The write-ahead log brings its index along, which SQLite opens on its own.
const char* FaultOfWalIndex(int flags) {
  return (flags & SQLITE_OPEN_WAL) != 0 ? Fault(LookAt((FilesOfThread()->database + "-shm").c_str()), true) : nullptr;
}

/// Whether the log would have to be made for somebody who only reads.
bool LacksLog(const char* name, int flags) {
  const bool missing =
      (flags & SQLITE_OPEN_WAL) != 0 && FilesOfThread()->read_only && GlanceAt(name).kind == FileState::Kind::kMissing;
  FilesOfThread()->log_missing = FilesOfThread()->log_missing || missing;
  return missing;
}

/// Whether the log's index would have to be made for somebody who only reads: the log is that of a program that was
/// killed.
bool LacksIndex(int flags) {
  return (flags & SQLITE_OPEN_WAL) != 0 && FilesOfThread()->read_only &&
         GlanceAt((FilesOfThread()->database + "-shm").c_str()).kind == FileState::Kind::kMissing;
}

int OpenNamed(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out_flags) {
  ConnectionFiles* const current = FilesOfThread();
  if (current != nullptr && current->database.empty() && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
    current->database = name;
  }
  if ((flags & SQLITE_OPEN_SUPER_JOURNAL) != 0) {
    return Refuse(kSeveralDatabases, SQLITE_CANTOPEN);
  }
  if (!IsDatabase(name) && !IsSideFile(name)) {
    return Refuse(kForeign, SQLITE_CANTOPEN);
  }
  if (LacksLog(name, flags)) {
    return SQLITE_CANTOPEN;
  }
  if (LacksIndex(flags)) {
    return Refuse(kNoIndex, SQLITE_CANTOPEN, "-wal");
  }
  if (const char* fault = FaultOfWalIndex(flags); fault != nullptr) {
    return Refuse(fault, SQLITE_CANTOPEN, "-shm");
  }
  return OpenBetweenLooks(vfs, name, file, flags, out_flags);
}

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out_flags) {
  constexpr int kTemporary =
      SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_TEMP_JOURNAL | SQLITE_OPEN_TRANSIENT_DB | SQLITE_OPEN_SUBJOURNAL;
  file->pMethods = nullptr;
  if (name == nullptr || (flags & kTemporary) != 0) {
    return Real(vfs)->xOpen(Real(vfs), name, file, flags, out_flags);
  }
  try {
    return OpenNamed(vfs, name, file, flags, out_flags);
  } catch (...) {
    return SQLITE_NOMEM;
  }
}

int Delete(sqlite3_vfs* vfs, const char* name, int sync_directory) {
  // SQLite removes the log of an empty database even for somebody who only reads.
  if (FilesOfThread() != nullptr && FilesOfThread()->read_only) {
    return Refuse(kLogOfNothing, SQLITE_CANTOPEN, "-wal");
  }
  if (!IsSideFile(name)) {
    return Refuse(kSeveralDatabases, SQLITE_IOERR_DELETE);
  }
  if (GlanceAt(name).kind == FileState::Kind::kOther) {
    return Refuse(kNotRegular, SQLITE_IOERR_DELETE);
  }
  return Real(vfs)->xDelete(Real(vfs), name, sync_directory);
}

// A journal that names a super-journal makes SQLite ask for that file first, whatever it is.
int Access(sqlite3_vfs* vfs, const char* name, int flags, int* answer) {
  return IsSideFile(name) ? Real(vfs)->xAccess(Real(vfs), name, flags, answer)
                          : Refuse(kSeveralDatabases, SQLITE_CANTOPEN);
}

// SQLite sleeps here between two tries for a lock, a tenth of a second at most, and counts the times: who is asked to
// end has waited long enough after a moment.
int Sleep(sqlite3_vfs* vfs, int microseconds) {
  return StatementsInterrupted() ? 0 : Real(vfs)->xSleep(Real(vfs), microseconds);
}

Guarded::Guarded(sqlite3_vfs& below)
    : sqlite3_vfs(below), name(std::string("corvo-telemetry-") + below.zName), real(&below) {
  zName = name.c_str();
  pNext = nullptr;
  xOpen = &Open;
  xDelete = &Delete;
  xAccess = &Access;
  xSleep = &Sleep;
}

/// The interfaces that were made. They leave SQLite's list with this library, which can be unloaded before SQLite is.
class Registrations {
 public:
  Registrations() = default;
  Registrations(const Registrations&) = delete;
  Registrations& operator=(const Registrations&) = delete;

  ~Registrations() {
    for (Guarded& guarded : made_) {
      LetOpeningWait(*guarded.real);
      sqlite3_vfs_unregister(&guarded);
    }
  }

  const char* NameOver(sqlite3_vfs& below) {
    const std::lock_guard lock(mutex_);
    for (const Guarded& guarded : made_) {
      if (guarded.real == &below) {
        return guarded.name.c_str();
      }
    }
    Guarded& added = made_.emplace_back(below);
    KeepOpeningFromWaiting(below);
    sqlite3_vfs_register(&added, 0);
    return added.name.c_str();
  }

 private:
  std::mutex mutex_;
  std::list<Guarded> made_;  // a list: SQLite keeps the addresses
};

Registrations registrations;

}  // namespace

Error CheckDatabaseFile(const std::filesystem::path& path, bool read_only, std::filesystem::path& resolved) {
  std::error_code failure;
  const file_type kind = std::filesystem::status(path, failure).type();
  if (kind == file_type::not_found) {
    return Refusal(SQLITE_CANTOPEN, path, "no such file");
  }
  if (kind == file_type::none) {
    return Refusal(SQLITE_CANTOPEN, path, failure.message());
  }
  if (kind != file_type::regular) {
    const int code = kind == file_type::directory ? SQLITE_CANTOPEN_ISDIR : SQLITE_CANTOPEN;
    return Refusal(code, path, kNotRegular);
  }
  std::filesystem::path file = std::filesystem::canonical(path, failure);
  if (failure) {
    return Refusal(SQLITE_CANTOPEN, path, failure.message());
  }
  if (!read_only && LookAt(telemetry::common::Utf8(file).c_str()).links > 1) {
    return Refusal(SQLITE_CANTOPEN, path, kSeveralNames);
  }
  if (Error error = CheckSideFiles(file); error.Failed()) {
    return error;
  }
  resolved = std::move(file);
  return {};
}

FileGuard::FileGuard(ConnectionFiles& files) noexcept : former_(FilesOfThread()) { SetFilesOfThread(&files); }

FileGuard::~FileGuard() { SetFilesOfThread(former_); }

bool CanOpen(const std::string& name, bool read_only) {
  constexpr std::size_t kLongestSuffix = 8;
  // These alone: with any other, SQLite would not know the file for a database, and closing it would drop the locks
  // that the process holds on it (https://www.sqlite.org/howtocorrupt.html#posix_advisory_locks).
  const int flags = SQLITE_OPEN_MAIN_DB | (read_only ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
  sqlite3_vfs* const vfs = sqlite3_vfs_find(GuardedVfs());
  if (vfs == nullptr) {
    return false;
  }
  std::string full(static_cast<std::size_t>(vfs->mxPathname) + 1, '\0');
  if (vfs->xFullPathname(vfs, name.c_str(), vfs->mxPathname + 1, full.data()) != SQLITE_OK ||
      std::strlen(full.c_str()) + kLongestSuffix > static_cast<std::size_t>(vfs->mxPathname)) {
    return false;
  }
  const std::unique_ptr<const char, decltype(&sqlite3_free_filename)> file_name(
      sqlite3_create_filename(full.c_str(), "", "", 0, nullptr), &sqlite3_free_filename);
  const std::unique_ptr<void, decltype(&sqlite3_free)> memory(sqlite3_malloc(vfs->szOsFile), &sqlite3_free);
  auto* const file = static_cast<sqlite3_file*>(memory.get());
  if (file_name == nullptr || file == nullptr || vfs->xOpen(vfs, file_name.get(), file, flags, nullptr) != SQLITE_OK) {
    return false;
  }
  return file->pMethods->xClose(file) == SQLITE_OK;
}

const char* GuardedVfs() {
  sqlite3_vfs* below = sqlite3_vfs_find(nullptr);
  return below != nullptr ? registrations.NameOver(*below) : nullptr;
}

}  // namespace corvo::shared
