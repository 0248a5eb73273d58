#include "storage/storage_settings.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "storage/data_directory.h"

namespace corvo::shared {
namespace {

using std::chrono::milliseconds;

std::mutex directory_mutex;
std::filesystem::path chosen_directory;
std::atomic<milliseconds> busy_timeout{milliseconds(5000)};
std::atomic<milliseconds> statement_time_limit{milliseconds(0)};
std::atomic<bool> compaction_guard{true};

std::filesystem::path DefaultDirectory() {
  const char* chosen = std::getenv("CORVO_TELEMETRY_DATA_DIR");
  return chosen != nullptr && *chosen != '\0' ? chosen : PlatformDataDirectory();
}

}  // namespace

void SetDataDirectory(const std::string& directory) {
  const std::filesystem::path absolute =
      directory.empty() ? std::filesystem::path() : std::filesystem::absolute(directory);
  const std::lock_guard lock(directory_mutex);
  chosen_directory = absolute;
}

std::string GetDataDirectory() {
  const std::lock_guard lock(directory_mutex);
  // The empty last part gives the separator at the end, and is no change when there is one.
  return (std::filesystem::absolute(chosen_directory.empty() ? DefaultDirectory() : chosen_directory) / "").string();
}

void SetBusyTimeout(milliseconds timeout) { busy_timeout = timeout; }
milliseconds GetBusyTimeout() { return busy_timeout; }

void SetStatementTimeLimit(milliseconds limit) { statement_time_limit = limit; }
milliseconds GetStatementTimeLimit() { return statement_time_limit; }

void SetCompactionGuard(bool on) { compaction_guard = on; }
bool GetCompactionGuard() { return compaction_guard; }

}  // namespace corvo::shared
