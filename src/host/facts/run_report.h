#pragma once

#include <vector>

#include "host/facts/inventory.h"
#include "host/pass/pass_runner.h"

namespace corvo::telemetry::host {

/// What a run did. `before` and `after` were taken with the same catalogue; a file may come or go in between.
struct RunReport {
  std::vector<DatabaseCount> before;
  std::vector<DatabaseCount> after;
  std::vector<PassOutcome> passes;  ///< at least one

  [[nodiscard]] const Json& Result() const { return passes.back().result; }
  [[nodiscard]] double Seconds() const;
};

/// One database with its counts before and after the run; no `after` when the file is gone.
struct DatabaseChange {
  const DatabaseCount* before;
  const DatabaseCount* after;
};

/// Pairs the counts of a database by its name, in the order of `before`.
[[nodiscard]] std::vector<DatabaseChange> Changes(const RunReport& report);

}  // namespace corvo::telemetry::host
