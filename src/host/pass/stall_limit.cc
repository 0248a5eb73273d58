#include "host/pass/stall_limit.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "host/facts/query.h"
#include "host/facts/record/compaction_rate.h"
#include "host/pass/copy_folder.h"
#include "host/platform/platform.h"
#include "host/show/standard_error.h"
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
  RemoveAbandonedCopies(place);
  const CopyFolder folder(place);
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

/// 0 when there is no room for a trial, say: then no time can be foretold, and nothing is compacted.
double TriedRate() {
  try {
    return RateOfATrial(SqliteTemporaryDirectory());
  } catch (const std::runtime_error& failure) {
    Tell(
        fmt::format("--max-stall: how fast databases are compacted here cannot be found out: {}; name another place "
                    "with the environment variable SQLITE_TMPDIR",
                    failure.what()));
    return 0;
  }
}

/// Whole seconds or two digits, rounded up: what is beyond a limit is not to look as if it kept to it.
std::string About(double seconds) {
  constexpr double kLong = 10;
  const double digit = seconds < kLong ? std::pow(kLong, std::floor(std::log10(seconds)) - 1) : 1;
  return fmt::format("about {:g} s", std::ceil(seconds / digit) * digit);
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
  std::string limit = fmt::format("--max-stall is {:g} s", seconds);
  if (seconds == 0) {
    return limit;
  }
  return fmt::format(
      "{}, {}",
      bytes_per_second > 0 ? "it would take " + About(SecondsFor(bytes)) : "how long it would take is not known",
      limit);
}

StallLimit FindStallLimit(double seconds, const fs::path& directory) {
  if (!(seconds > 0)) {
    return {};
  }
  if (const std::optional<double> recorded = RecordedRate(directory)) {
    return {.seconds = seconds, .bytes_per_second = *recorded};
  }
  const double tried = TriedRate();
  return {.seconds = seconds, .bytes_per_second = tried, .tried = tried};
}

}  // namespace corvo::telemetry::host
