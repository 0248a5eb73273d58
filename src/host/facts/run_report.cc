#include "host/facts/run_report.h"

#include <algorithm>

namespace corvo::telemetry::host {

double RunReport::Seconds() const {
  double sum = 0;
  for (const PassOutcome& pass : passes) {
    sum += pass.seconds;
  }
  return sum;
}

std::vector<DatabaseChange> Changes(const RunReport& report) {
  std::vector<DatabaseChange> changes;
  for (const DatabaseCount& before : report.before) {
    const auto after = std::find_if(report.after.begin(), report.after.end(),
                                    [&before](const DatabaseCount& count) { return count.name == before.name; });
    changes.push_back({&before, after == report.after.end() ? nullptr : &*after});
  }
  return changes;
}

}  // namespace corvo::telemetry::host
