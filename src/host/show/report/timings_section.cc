#include <fmt/core.h>

#include <algorithm>

#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Subject = ReportFacts::Subject;

struct Timing {
  std::string database;
  std::string what;
  bool compaction;
  double seconds;
};

/// Longest first.
std::vector<Timing> TimingsOf(const RunRecord& run) {
  std::vector<Timing> timings;
  for (const DatabaseRecord& database : run.databases) {
    for (const TableRecord& table : database.tables) {
      timings.push_back({database.name, table.table, false, table.seconds});
    }
    if (database.not_compacted.empty()) {
      timings.push_back({database.name, "Compaction", true, database.compaction_seconds});
    }
  }
  std::erase_if(timings, [](const Timing& timing) { return !(timing.seconds > 0); });
  std::stable_sort(timings.begin(), timings.end(),
                   [](const Timing& one, const Timing& other) { return one.seconds > other.seconds; });
  return timings;
}

/// The run whose statements are shown; null when none is known.
const RunRecord* Timed(const ReportFacts& facts) {
  if (facts.subject != Subject::kStatus) {
    return &facts.pass;
  }
  return facts.history.empty() ? nullptr : &facts.history.back();
}

std::string Lead(const ReportFacts& facts) {
  switch (facts.subject) {
    case Subject::kPlan:
      return "The statements of the plan, on the copies.";
    case Subject::kRun:
      return "The statements of the run.";
    case Subject::kStatus:
      break;
  }
  return facts.history.empty()
             ? "No run is recorded yet."
             : fmt::format("The statements of the last run, of {}.", Moment(facts.history.back().start));
}

}  // namespace

std::string TimingsSection(const ReportFacts& facts) {
  const RunRecord* const run = Timed(facts);
  const std::vector<Timing> timings = run == nullptr ? std::vector<Timing>() : TimingsOf(*run);
  Json rows = Json::array();
  for (const Timing& timing : timings) {
    rows.push_back({{"database", timing.database},
                    {"what", timing.what},
                    {"tone", timing.compaction ? "compaction" : "deletion"},
                    {"seconds", timing.seconds},
                    {"text", Duration(timing.seconds)},
                    {"width", Percent(timing.seconds, timings.front().seconds)}});
  }
  return FillTemplate(templates::kTimings, {{"lead", Lead(facts)}, {"has_timings", !rows.empty()}, {"timings", rows}});
}

}  // namespace corvo::telemetry::host
