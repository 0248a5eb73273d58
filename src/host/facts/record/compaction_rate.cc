#include "host/facts/record/compaction_rate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace corvo::telemetry::host {
namespace {

constexpr double kShortest = 0.05;  // seconds
constexpr std::size_t kMost = 20;

/// Oldest first.
std::vector<double> RatesOf(const std::vector<RunRecord>& runs) {
  std::vector<double> rates;
  for (const RunRecord& run : runs) {
    for (const DatabaseRecord& database : run.databases) {
      if (database.compacted_bytes > 0 && database.compaction_seconds >= kShortest) {
        rates.push_back(static_cast<double>(database.compacted_bytes) / database.compaction_seconds);
      }
    }
  }
  return rates;
}

std::optional<double> LastUsed(const std::vector<RunRecord>& runs) {
  const auto last =
      std::find_if(runs.rbegin(), runs.rend(), [](const RunRecord& run) { return run.compaction_rate > 0; });
  return last == runs.rend() ? std::nullopt : std::optional(last->compaction_rate);
}

}  // namespace

std::optional<double> CompactionRate(const std::vector<RunRecord>& runs) {
  std::vector<double> rates = RatesOf(runs);
  if (rates.empty()) {
    return LastUsed(runs);
  }
  rates.erase(rates.begin(), rates.end() - static_cast<std::ptrdiff_t>(std::min(rates.size(), kMost)));
  const auto middle = rates.begin() + static_cast<std::ptrdiff_t>(rates.size() / 2);
  std::nth_element(rates.begin(), middle, rates.end());
  return *middle;
}

}  // namespace corvo::telemetry::host
