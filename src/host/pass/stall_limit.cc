#include "host/pass/stall_limit.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "host/facts/query.h"
#include "host/facts/record/compaction_rate.h"
#include "host/platform/platform.h"
#include "host/platform/private_directory.h"
#include "host/show/failure.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// A history that cannot be read says nothing; the run tells of it when it adds its own line.
std::optional<double> RecordedRate(const fs::path& directory) {
  try {
    return CompactionRate(ReadHistory(directory));
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

void Require(const common::Error& error) {
  if (error.Failed()) {
    throw std::runtime_error(error.what);
  }
}

/// An empty file is an empty database.
double RateOfATrial(const fs::path& place) {
  const PrivateDirectory folder(place);
  const fs::path file = folder.Path() / "Trial.db";
  std::ofstream(file).flush();
  const shared::StorageOptionsScope always_compacting{shared::StorageOptions()};
  shared::TelemetryStorage storage(file.string().c_str(), "");
  Require(storage.GetLastError());
  Require(RunStatement(storage, "CREATE TABLE Trial (time TEXT, value BLOB)"));
  Require(RunStatement(storage,
                       "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 32768) "
                       "INSERT INTO Trial SELECT datetime(i, 'unixepoch'), zeroblob(220) FROM n"));
  const auto start = std::chrono::steady_clock::now();
  Require(RunStatement(storage, "VACUUM;"));
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  constexpr double kTick = 1e-6;
  return static_cast<double>(fs::file_size(file)) / std::max(seconds.count(), kTick);
}

double TriedRate() {
  try {
    return RateOfATrial(SqliteTemporaryDirectory());
  } catch (const std::runtime_error& failure) {
    throw CommandFailure(kPassFailed,
                         fmt::format("--max-stall: cannot find out how fast databases are compacted here: {}; name "
                                     "another place with the environment variable SQLITE_TMPDIR",
                                     failure.what()));
  }
}

std::string About(double seconds) {
  constexpr double kTenth = 0.1;
  constexpr double kLong = 10;
  return seconds < kTenth ? "less than 0.1 s" : fmt::format("about {:.{}f} s", seconds, seconds < kLong ? 1 : 0);
}

}  // namespace

std::int64_t StallLimit::Bytes() const {
  constexpr double kMost = 9e18;
  return std::max<std::int64_t>(static_cast<std::int64_t>(std::min(seconds * bytes_per_second, kMost)), 1);
}

double StallLimit::SecondsFor(std::int64_t bytes) const {
  return bytes_per_second > 0 ? static_cast<double>(bytes) / bytes_per_second : 0;
}

std::string StallLimit::Reason(std::int64_t bytes) const {
  const std::string limit = fmt::format("--max-stall is {} s", seconds);
  return seconds > 0 ? fmt::format("it would take {}, {}", About(SecondsFor(bytes)), limit) : limit;
}

StallLimit FindStallLimit(double seconds, const fs::path& directory) {
  if (!(seconds > 0)) {
    return {};
  }
  const std::optional<double> recorded = RecordedRate(directory);
  return {seconds, recorded ? *recorded : TriedRate()};
}

}  // namespace corvo::telemetry::host
