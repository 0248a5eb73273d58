#include <fmt/core.h>

#include <algorithm>

#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kRunsDrawn = 40;
constexpr std::size_t kRunsListed = 12;

// A run is ten units wide, the most rows are a hundred units high.
constexpr double kRunWidth = 10;
constexpr double kGap = 2;

using Runs = std::vector<RunRecord>;

Runs Last(const Runs& runs, std::size_t most) {
  const auto count = static_cast<std::ptrdiff_t>(std::min(runs.size(), most));
  return {runs.end() - count, runs.end()};
}

std::string Outcome(const RunRecord& run) {
  if (run.signal != 0) {
    return "ended early by the user";
  }
  return run.result.empty() ? "all was cleaned" : run.result;
}

Json Bar(const RunRecord& run, const char* tone, double x, double top, double height, const std::string& what) {
  return {{"x", fmt::format("{:.1f}", x + kGap / 2)},
          {"y", fmt::format("{:.2f}", top)},
          {"width", fmt::format("{:.1f}", kRunWidth - kGap)},
          {"height", fmt::format("{:.2f}", height)},
          {"tone", tone},
          {"label", Moment(run.start) + ": " + what}};
}

/// The run's column: its rules stacked from below, or a trace that it took place.
void DrawRun(const RunRecord& run, double x, double most, Json& bars) {
  constexpr double kTrace = 1.5;
  const Deleted deleted = run.DeletedRows();
  if (deleted.Sum() == 0) {
    bars.push_back(Bar(run, "none", x, 100 - kTrace, kTrace, "nothing deleted"));
    return;
  }
  double top = 100;
  for (const Reason& reason : Reasons()) {
    const std::int64_t rows = deleted.*reason.rows;
    const double height = 100 * static_cast<double>(rows) / most;
    top -= height;
    if (rows > 0) {
      bars.push_back(Bar(run, reason.name, x, top, height, fmt::format("{}, {}", Counted(rows, "row"), reason.label)));
    }
  }
}

Json Chart(const Runs& runs) {
  std::int64_t most = 1;
  for (const RunRecord& run : runs) {
    most = std::max(most, run.DeletedRows().Sum());
  }
  Json bars = Json::array();
  double x = 0;
  for (const RunRecord& run : runs) {
    DrawRun(run, x, static_cast<double>(most), bars);
    x += kRunWidth;
  }
  // A few runs are drawn as narrow as many.
  const double width = std::max(x, kRunWidth * 12);
  return {{"width", fmt::format("{:.0f}", width)},
          {"share", Percent(x, width)},
          {"bars", bars},
          {"legend", Legend()},
          {"most", Counted(most, "row")},
          {"first", Moment(runs.front().start)},
          {"last", runs.size() > 1 ? Json(Moment(runs.back().start)) : Json()}};
}

Json RunJson(const RunRecord& run) {
  Json json = {{"start", Moment(run.start)},
               {"duration", Duration(run.seconds)},
               {"freed", Size(run.BytesFreed())},
               {"outcome", Outcome(run)},
               {"tone", run.signal == 0 && run.result.empty() ? "good" : "bad"}};
  PutDeleted(json, run.DeletedRows());
  return json;
}

Json Listed(const Runs& runs) {
  Json rows = Json::array();
  const Runs last = Last(runs, kRunsListed);
  std::for_each(last.rbegin(), last.rend(), [&rows](const RunRecord& run) { rows.push_back(RunJson(run)); });
  return rows;
}

std::string Lead(const ReportFacts& facts) {
  if (!facts.history_problem.empty()) {
    return "The history cannot be read: " + facts.history_problem;
  }
  const auto runs = static_cast<std::int64_t>(facts.history.size());
  return runs == 0 ? "No run is recorded yet."
                   : fmt::format("{} recorded; the rows that each deleted.", Counted(runs, "run"));
}

}  // namespace

std::string HistorySection(const ReportFacts& facts) {
  Json view = {{"lead", Lead(facts)}, {"chart", nullptr}, {"has_runs", false}, {"runs", Json::array()}};
  if (!facts.history.empty()) {
    view["chart"] = Chart(Last(facts.history, kRunsDrawn));
    view["has_runs"] = true;
    view["runs"] = Listed(facts.history);
  }
  return FillTemplate(templates::kHistory, view);
}

}  // namespace corvo::telemetry::host
