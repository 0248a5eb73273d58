#include "host/pass/copy_folder.h"

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "common/text.h"
#include "host/platform/trust.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCopies = "copies";

bool IsDirectoryItself(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(fs::symlink_status(path, error));
}

// The copies are made after the lock and removed before it, so that what holds both and is not locked is nobody's. A
// folder with anything else in it, such as a data directory, is none of a plan. Where others may write, or put another
// folder in its place, nothing is removed.
bool LooksAbandoned(const fs::path& folder) {
  if (!IsDirectoryItself(folder) || !WhoElseMayWrite(folder).empty()) {
    return false;
  }
  std::size_t entries = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    const fs::path name = entry.path().filename();
    if (name != InstanceLock::kFileName && (name != kCopies || !IsDirectoryItself(entry.path()))) {
      return false;
    }
    ++entries;
  }
  return entries == 2;
}

/// @throws std::exception when it cannot be removed; another plan may be about to.
void RemoveIfAbandoned(const fs::path& folder) {
  if (!LooksAbandoned(folder)) {
    return;
  }
  std::string holder;
  std::optional<InstanceLock> lock = InstanceLock::TryTake(folder, holder);
  if (lock) {
    fs::remove_all(folder / kCopies);
    lock.reset();
    fs::remove(folder);
  }
}

InstanceLock Lock(const fs::path& folder) {
  std::string holder;
  if (auto lock = InstanceLock::TryTake(folder, holder)) {
    return *std::move(lock);
  }
  throw std::runtime_error("cannot lock " + common::Utf8(folder) + ": " + holder);
}

}  // namespace

CopyFolder::CopyFolder(const fs::path& place)
    : folder_(place), lock_(Lock(folder_.Path())), copies_(folder_.Path() / kCopies) {
  fs::create_directory(copies_);
}

CopyFolder::~CopyFolder() {
  std::error_code ignored;
  fs::remove_all(copies_, ignored);
}

void RemoveAbandonedCopies(const fs::path& place) {
  std::vector<fs::path> folders;
  std::error_code unreadable;
  for (fs::directory_iterator entry(place, unreadable), end; !unreadable && entry != end; entry.increment(unreadable)) {
    if (entry->path().filename().native().starts_with(fs::path(PrivateDirectory::kPrefix).native())) {
      folders.push_back(entry->path());
    }
  }
  for (const fs::path& folder : folders) {
    try {
      RemoveIfAbandoned(folder);
    } catch (const std::exception&) {
      continue;  // It is in nobody's way.
    }
  }
}

}  // namespace corvo::telemetry::host
