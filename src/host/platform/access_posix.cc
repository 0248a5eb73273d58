#include <fcntl.h>
#include <unistd.h>

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

}  // namespace corvo::telemetry::host
