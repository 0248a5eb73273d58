#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "host/platform/access.h"

namespace corvo::telemetry::host {
namespace {

// With the rights that the process has now, not with those of who started it.
bool MayAccess(const std::filesystem::path& path, int mode) {
  return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0 ||
         (errno != EACCES && errno != EPERM && errno != EROFS);
}

}  // namespace

bool MayReadAndWrite(const std::filesystem::path& file) { return MayAccess(file, R_OK | W_OK); }

bool MayWriteIn(const std::filesystem::path& directory) { return MayAccess(directory, W_OK | X_OK); }

bool IsOnReadOnlyFileSystem(const std::filesystem::path& file) {
  struct statvfs status {};
  return statvfs(file.c_str(), &status) == 0 && (status.f_flag & ST_RDONLY) != 0;
}

bool LacksFileHandles() {
  constexpr std::size_t kFilesOfADatabase = 4;  // with its journal or log, the log's index, and a temporary one
  std::array<int, kFilesOfADatabase> handles{};
  bool lacking = false;
  for (int& handle : handles) {
    handle = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    lacking = lacking || (handle < 0 && (errno == EMFILE || errno == ENFILE));
  }
  for (const int handle : handles) {
    if (handle >= 0) {
      close(handle);
    }
  }
  return lacking;
}

}  // namespace corvo::telemetry::host
