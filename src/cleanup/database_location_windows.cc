#include <windows.h>

#include "cleanup/database_location.h"

namespace corvo::telemetry::cleanup {
namespace {

bool MeansNotFound(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_NETNAME_DELETED:
    case ERROR_INVALID_NAME:
    case ERROR_DIRECTORY:
      return true;
    default:
      return false;
  }
}

// Opening follows a link, which the attributes do not.
DWORD OpenForNothing(const std::filesystem::path& path) {
  const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return GetLastError();
  }
  CloseHandle(file);
  return ERROR_SUCCESS;
}

DWORD Look(const std::filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return GetLastError();
  }
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? OpenForNothing(path) : ERROR_SUCCESS;
}

}  // namespace

// MinGW's own exists() knows the C runtime's few error numbers only and throws on an invalid name.
bool EntryExists(const std::filesystem::path& path) {
  const DWORD error = Look(path);
  if (error != ERROR_SUCCESS && !MeansNotFound(error)) {
    throw std::filesystem::filesystem_error("exists", path,
                                            std::error_code(static_cast<int>(error), std::system_category()));
  }
  return error == ERROR_SUCCESS;
}

}  // namespace corvo::telemetry::cleanup
