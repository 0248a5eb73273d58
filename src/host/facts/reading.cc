#include "host/facts/reading.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace corvo::telemetry::host {

shared::StorageOptions ReadingOptions(const std::filesystem::path& file) {
  using std::chrono::milliseconds;
  constexpr std::uintmax_t kBytesPerMillisecond = 5'000;
  constexpr milliseconds kAtLeast{10'000};
  shared::StorageOptions options = shared::GetStorageOptions();
  options.read_only = true;
  options.check_soundness = false;
  std::error_code unknown;
  const std::uintmax_t bytes = std::filesystem::file_size(file, unknown);
  const milliseconds enough = kAtLeast + milliseconds(unknown ? 0 : bytes / kBytesPerMillisecond);
  const bool limited = options.statement_time_limit > milliseconds(0);
  options.statement_time_limit = limited ? std::min(options.statement_time_limit, enough) : enough;
  return options;
}

}  // namespace corvo::telemetry::host
