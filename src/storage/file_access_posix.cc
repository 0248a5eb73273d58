#include <sys/stat.h>

#include <cerrno>

#include "storage/file_access.h"

namespace corvo::shared {

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

}  // namespace corvo::shared
