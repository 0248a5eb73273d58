#include "storage/storage_options.h"

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <utility>

#include "storage/connection/file_access.h"

namespace corvo::shared {
namespace {

namespace fs = std::filesystem;

std::mutex mutex;
StorageOptions in_force;

/// The limits on SQLite's memory that the host had set itself, for as long as ours is in force.
struct HostLimits {
  std::int64_t hard;
  std::int64_t soft;
} host_limits;

void LimitMemory(std::int64_t former, std::int64_t limit) noexcept {
  constexpr std::int64_t kAsk = -1;
  if (former <= 0 && limit > 0) {
    host_limits = {sqlite3_hard_heap_limit64(kAsk), sqlite3_soft_heap_limit64(kAsk)};
  }
  if (limit > 0) {
    sqlite3_hard_heap_limit64(limit);
  } else if (former > 0) {
    sqlite3_hard_heap_limit64(host_limits.hard);
    sqlite3_soft_heap_limit64(host_limits.soft);
  }
}

void Install(StorageOptions&& options) noexcept {
  const std::lock_guard lock(mutex);
  LimitMemory(in_force.memory_limit, options.memory_limit);
  in_force = std::move(options);
}

std::string Absolute(const std::string& directory) {
  return directory.empty() ? directory : fs::absolute(directory).string();
}

fs::path DefaultDirectory() {
  const char* chosen = std::getenv("CORVO_TELEMETRY_DATA_DIR");
  return chosen != nullptr && *chosen != '\0' ? chosen : PlatformDataDirectory();
}

}  // namespace

void SetStorageOptions(const StorageOptions& options) {
  StorageOptions copy = options;
  copy.data_directory = Absolute(options.data_directory);
  Install(std::move(copy));
}

StorageOptions GetStorageOptions() {
  const std::lock_guard lock(mutex);
  return in_force;
}

StorageOptionsScope::StorageOptionsScope(const StorageOptions& options) : former_(GetStorageOptions()) {
  SetStorageOptions(options);
}

StorageOptionsScope::~StorageOptionsScope() { Install(std::move(former_)); }

void SetDataDirectory(const std::string& directory) {
  StorageOptions options = GetStorageOptions();
  options.data_directory = directory;
  SetStorageOptions(options);
}

std::string GetDataDirectory() {
  const std::string chosen = GetStorageOptions().data_directory;
  // The empty last part gives the separator at the end, and is no change when there is one.
  return (fs::absolute(chosen.empty() ? DefaultDirectory() : fs::path(chosen)) / "").string();
}

}  // namespace corvo::shared
