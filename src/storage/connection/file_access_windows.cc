#include <sqlite3.h>
#include <windows.h>

#include <filesystem>

#include "common/text.h"
#include "storage/connection/file_access.h"

namespace corvo::shared {
namespace {

/// A slot of every thread, given back when the library is unloaded.
class ThreadSlot {
 public:
  ThreadSlot() : index_(TlsAlloc()) {}
  ThreadSlot(const ThreadSlot&) = delete;
  ThreadSlot& operator=(const ThreadSlot&) = delete;
  ~ThreadSlot() { TlsFree(index_); }

  [[nodiscard]] void* Get() const noexcept { return TlsGetValue(index_); }
  void Set(void* value) const noexcept { TlsSetValue(index_, value); }

 private:
  DWORD index_;
};

const ThreadSlot slot;

std::uint64_t Join(DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; }

std::uint64_t Join(const FILETIME& time) { return Join(time.dwHighDateTime, time.dwLowDateTime); }

// What both kinds of information tell.
template <class Information>
FileState FromAttributes(const Information& information) {
  constexpr DWORD kNotRegular = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
  FileState state;
  state.kind = (information.dwFileAttributes & kNotRegular) == 0 ? FileState::Kind::kRegular : FileState::Kind::kOther;
  state.size = Join(information.nFileSizeHigh, information.nFileSizeLow);
  state.modified = static_cast<std::int64_t>(Join(information.ftLastWriteTime));
  return state;
}

FileState FromInformation(const BY_HANDLE_FILE_INFORMATION& information) {
  FileState state = FromAttributes(information);
  state.volume = information.dwVolumeSerialNumber;
  state.file = Join(information.nFileIndexHigh, information.nFileIndexLow);
  state.links = information.nNumberOfLinks;
  return state;
}

FileState FromError(DWORD error) {
  FileState state;
  if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
    state.kind = FileState::Kind::kMissing;
  }
  return state;
}

// Without a right to read or write: locks of this process are tied to their handles here, so closing this one is safe.
FileState LookAtPath(const std::filesystem::path& path) {
  const HANDLE file =
      CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return FromError(GetLastError());
  }
  BY_HANDLE_FILE_INFORMATION information{};
  const bool known = GetFileInformationByHandle(file, &information) != 0;
  CloseHandle(file);
  return known ? FromInformation(information) : FileState();
}

FileState GlanceAtPath(const std::filesystem::path& path) {
  WIN32_FILE_ATTRIBUTE_DATA information{};
  return GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &information) != 0 ? FromAttributes(information)
                                                                                      : FromError(GetLastError());
}

}  // namespace

const char* PlatformDataDirectory() { return "c:\\ProgramData\\Corvo\\Telemetry\\Data\\"; }

FileState LookAt(const char* name) noexcept {
  try {
    return LookAtPath(telemetry::common::PathFromUtf8(name));
  } catch (...) {
    // No memory for the path: what cannot be looked at is not opened.
    return {};
  }
}

// Pipes have names of their own here, which no file of a folder can have.
void KeepOpeningFromWaiting(sqlite3_vfs& /*platform*/) {}
void LetOpeningWait(sqlite3_vfs& /*platform*/) {}

FileState GlanceAt(const char* name) noexcept {
  try {
    return GlanceAtPath(telemetry::common::PathFromUtf8(name));
  } catch (...) {
    return {};
  }
}

// Of SQLite's own handle: another one could keep a collector from what it is about to do.
FileState LookAtOpen(sqlite3* handle, const char* name) noexcept {
  HANDLE file = nullptr;
  BY_HANDLE_FILE_INFORMATION information{};
  if (sqlite3_file_control(handle, "main", SQLITE_FCNTL_WIN32_GET_HANDLE, &file) == SQLITE_OK && file != nullptr &&
      GetFileInformationByHandle(file, &information) != 0) {
    return FromInformation(information);
  }
  return GlanceAt(name);
}

ConnectionFiles* FilesOfThread() noexcept { return static_cast<ConnectionFiles*>(slot.Get()); }

void SetFilesOfThread(ConnectionFiles* files) noexcept { slot.Set(files); }

}  // namespace corvo::shared
