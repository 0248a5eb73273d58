#include <windows.h>

#include <string>

#include "host/platform/access.h"

namespace corvo::telemetry::host {
namespace {

// Opening without sharing rules is the one question that takes every kind of permission into account.
bool MayOpen(const std::filesystem::path& path, DWORD rights) {
  const HANDLE handle = CreateFileW(path.c_str(), rights, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    CloseHandle(handle);
    return true;
  }
  return GetLastError() != ERROR_ACCESS_DENIED;
}

}  // namespace

bool MayReadAndWrite(const std::filesystem::path& file) { return MayOpen(file, GENERIC_READ | GENERIC_WRITE); }

bool MayWriteIn(const std::filesystem::path& directory) { return MayOpen(directory, FILE_ADD_FILE); }

bool IsOnReadOnlyFileSystem(const std::filesystem::path& file) {
  std::wstring volume(MAX_PATH + 1, L'\0');
  DWORD flags = 0;
  return GetVolumePathNameW(file.c_str(), volume.data(), static_cast<DWORD>(volume.size())) != 0 &&
         GetVolumeInformationW(volume.c_str(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) != 0 &&
         (flags & FILE_READ_ONLY_VOLUME) != 0;
}

bool LacksFileHandles() { return false; }  // As many as there is memory for.

}  // namespace corvo::telemetry::host
