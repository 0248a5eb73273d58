#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "storage/connection/file_access.h"

namespace corvo::shared {
namespace {

// SQLite's own type of its replaceable system calls, and of the one that opens files
// (https://www.sqlite.org/c3ref/vfs.html).
using SystemCall = sqlite3_syscall_ptr;
using OpenFunction = int (*)(const char* path, int flags, int mode);

constexpr const char* kOpen = "open";
OpenFunction former_open = nullptr;
thread_local ConnectionFiles* files_of_thread = nullptr;

int OpenNoFifo(const char* path, int flags, int mode) {
  if (files_of_thread == nullptr) {
    return former_open(path, flags, mode);
  }
  const int file = former_open(path, flags | O_NONBLOCK, mode);
  struct stat status {};
  if (file >= 0 && fstat(file, &status) == 0 && S_ISFIFO(status.st_mode)) {
    close(file);
    errno = ENXIO;
    return -1;
  }
  return file;
}

bool HasSystemCalls(const sqlite3_vfs& platform) {
  return platform.iVersion >= 3 && platform.xSetSystemCall != nullptr;
}

}  // namespace

const char* PlatformDataDirectory() { return "/var/lib/corvo/telemetry/data/"; }

FileState LookAt(const char* name) noexcept {
  struct stat status {};
  FileState state;
  if (lstat(name, &status) != 0) {
    state.kind = errno == ENOENT || errno == ENOTDIR ? FileState::Kind::kMissing : FileState::Kind::kOther;
    return state;
  }
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  state.kind = S_ISREG(status.st_mode) ? FileState::Kind::kRegular : FileState::Kind::kOther;
  state.volume = status.st_dev;
  state.file = status.st_ino;
  state.links = status.st_nlink;
  state.size = static_cast<std::uint64_t>(status.st_size);
  state.modified = status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec;
  return state;
}

void KeepOpeningFromWaiting(sqlite3_vfs& platform) {
  if (former_open != nullptr || !HasSystemCalls(platform)) {
    return;
  }
  if (const SystemCall open = platform.xGetSystemCall(&platform, kOpen); open != nullptr) {
    former_open = reinterpret_cast<OpenFunction>(open);
    platform.xSetSystemCall(&platform, kOpen, reinterpret_cast<SystemCall>(&OpenNoFifo));
  }
}

void LetOpeningWait(sqlite3_vfs& platform) {
  if (former_open != nullptr && HasSystemCalls(platform)) {
    platform.xSetSystemCall(&platform, kOpen, reinterpret_cast<SystemCall>(former_open));
    former_open = nullptr;
  }
}

FileState GlanceAt(const char* name) noexcept { return LookAt(name); }

FileState LookAtOpen(sqlite3* /*handle*/, const char* name) noexcept { return LookAt(name); }

ConnectionFiles* FilesOfThread() noexcept { return files_of_thread; }

void SetFilesOfThread(ConnectionFiles* files) noexcept { files_of_thread = files; }

}  // namespace corvo::shared
