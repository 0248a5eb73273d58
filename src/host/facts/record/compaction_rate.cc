#include "host/facts/record/compaction_rate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace corvo::telemetry::host {
namespace {

constexpr double kShortest = 0.05;  // seconds
constexpr std::size_t kMost = 20;

using Runs = std::span<const RunRecord>;

/// Oldest first.
std::vector<double> RatesOf(Runs runs) {
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

std::optional<double> LastTried(Runs runs) {
  const auto last =
      std::find_if(runs.rbegin(), runs.rend(), [](const RunRecord& run) { return run.compaction_rate > 0; });
  return last == runs.rend() ? std::nullopt : std::optional(last->compaction_rate);
}

}  // namespace

std::optional<double> CompactionRate(const std::vector<RunRecord>& runs) {
  // A rate that was taken at a bad moment can leave out every compaction that would show a better one: it ages.
  const Runs newest = Runs(runs).last(std::min(runs.size(), kMost));
  std::vector<double> rates = RatesOf(newest);
  if (rates.empty()) {
    return LastTried(newest);
  }
  rates.erase(rates.begin(), rates.end() - static_cast<std::ptrdiff_t>(std::min(rates.size(), kMost)));
  const auto middle = rates.begin() + static_cast<std::ptrdiff_t>(rates.size() / 2);
  std::nth_element(rates.begin(), middle, rates.end());
  return *middle;
}

}  // namespace corvo::telemetry::host
