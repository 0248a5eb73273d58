#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// How long a compaction may keep writers waiting, and how fast this machine compacts.
struct StallLimit {
  double seconds = 0;           ///< 0: not at all, so that nothing is compacted
  double bytes_per_second = 0;  ///< of a database that is compacted; 0: not known, and nothing is
  double tried = 0;             ///< the same, when it was found by a trial; else 0

  /// The most bytes that a compaction may write within the limit.
  [[nodiscard]] std::int64_t Bytes() const;

  /// How long a compaction would take, in seconds; 0 when that is not known.
  [[nodiscard]] double SecondsFor(std::int64_t bytes) const;

  /// Why a compaction that would write so many bytes is left out, in a few words.
  [[nodiscard]] std::string Reason(std::int64_t bytes) const;
};

/// The limit, with the rate of the compactions that the directory's history records. Where it records none, a small
/// database in a private directory among SQLite's temporary files is compacted to see.
/// What keeps that from being made is told on standard error, and the rate is not known.
[[nodiscard]] StallLimit FindStallLimit(double seconds, const std::filesystem::path& directory);

}  // namespace corvo::telemetry::host
