#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/directory_state.h"
#include "host/facts/record/history.h"
#include "host/facts/rows/row_ages.h"

namespace corvo::telemetry::host {

/// What a page tells of.
struct ReportFacts {
  enum class Subject {
    kStatus,  ///< how things stand; the pass is what the rules foresee, without the bytes after it
    kPlan,    ///< the pass is what it did to copies
    kRun,     ///< the pass is the last one of the history
  };

  Subject subject = Subject::kStatus;
  DirectoryState state;                                   ///< now, whatever the subject
  std::vector<std::vector<std::optional<RowAges>>> ages;  ///< of each database of `state`, as `ReadRowAges` gives them
  RunRecord pass;
  std::vector<RunRecord> history;    ///< oldest first
  std::string history_problem = {};  ///< why it cannot be read; then it is empty
};

/// What a pass would delete by the forecasts of the state, as if it were over: its times are 0, and so are the bytes of
/// databases after it.
[[nodiscard]] RunRecord ForecastOf(const DirectoryState& state);

/// The page: HTML that needs nothing else, and no script. Whatever comes from files is escaped in it.
[[nodiscard]] std::string ReportPage(const ReportFacts& facts);

}  // namespace corvo::telemetry::host
