#include "host/show/report/report_page.h"

#include <fmt/core.h>

#include <utility>

#include "common/text.h"
#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Subject = ReportFacts::Subject;

const char* Title(Subject subject) {
  switch (subject) {
    case Subject::kPlan:
      return "Plan of a run";
    case Subject::kRun:
      return "The last run";
    case Subject::kStatus:
      break;
  }
  return "Status of the databases";
}

/// What a reader has to know first.
struct Verdict {
  const char* tone;
  std::string text;
};

Verdict VerdictOf(const DirectoryState& state) {
  std::int64_t there = 0;
  std::int64_t attention = 0;
  for (const DatabaseState& database : state.databases) {
    there += database.missing ? 0 : 1;
    attention += !database.missing && NeedsAttention(database, state.now) ? 1 : 0;
  }
  if (there == 0) {
    return {"warn", "There are no databases here."};
  }
  return attention == 0 ? Verdict{"good", fmt::format("All of {} are within their limits.", Counted(there, "database"))}
                        : Verdict{"warn", fmt::format("{} of {} {} attention.", attention, Counted(there, "database"),
                                                      attention == 1 ? "needs" : "need")};
}

Json Tile(const char* label, const Json& figure, const std::string& note) {
  return {{"label", label}, {"figure", figure}, {"note", note}};
}

struct Totals {
  std::int64_t databases = 0;
  std::int64_t tables = 0;
  std::int64_t rows = 0;
  std::int64_t bytes = 0;
  std::int64_t free_bytes = 0;
};

Totals TotalsOf(const DirectoryState& state) {
  Totals totals;
  for (const DatabaseState& database : state.databases) {
    totals.databases += database.missing ? 0 : 1;
    totals.bytes += database.file_bytes + database.wal_bytes;
    totals.free_bytes += database.free_bytes;
    for (const TableState& table : database.tables) {
      totals.tables += database.missing || database.problem || table.missing ? 0 : 1;
      totals.rows += table.rows;
    }
  }
  return totals;
}

Json Tiles(const ReportFacts& facts) {
  const Totals totals = TotalsOf(facts.state);
  Json tiles = Json::array(
      {Tile("Databases", Figure(totals.databases), fmt::format("of {} known", facts.state.databases.size())),
       Tile("Rows", Figure(totals.rows), "in " + Counted(totals.tables, "table")),
       Tile("Size", Size(totals.bytes), HumanBytes(totals.free_bytes) + " of it free pages")});
  const Json deleted = Figure(facts.pass.DeletedRows().Sum());
  const std::string freed = HumanBytes(facts.pass.BytesFreed());
  switch (facts.subject) {
    case Subject::kStatus:
      tiles.push_back(Tile("Rows to go", deleted, "with the next pass"));
      break;
    case Subject::kPlan:
      tiles.push_back(Tile("Rows to go", deleted, freed + " would be freed"));
      break;
    case Subject::kRun:
      tiles.push_back(Tile("Rows deleted", deleted, freed + " freed by the last run"));
      break;
  }
  return tiles;
}

/// The sections in their order, for a reader who knows what to look for.
Json Contents(Subject subject) {
  const auto entry = [](const char* id, const char* title) -> Json { return {{"id", id}, {"title", title}}; };
  Json contents = Json::array({entry("limits", "Limits"), entry("change", "Before and after"), entry("ages", "Ages"),
                               entry("timings", "Times"), entry("history", "Last runs")});
  if (subject != Subject::kStatus) {
    std::swap(contents[0], contents[1]);
  }
  return contents;
}

/// What the reader asked for comes first.
std::string Sections(const ReportFacts& facts) {
  const bool status = facts.subject == Subject::kStatus;
  const std::string limits = LimitsSection(facts.state);
  const std::string change = ChangeSection(facts);
  return (status ? limits + change : change + limits) + AgesSection(facts) + TimingsSection(facts) +
         HistorySection(facts);
}

}  // namespace

RunRecord ForecastOf(const DirectoryState& state) {
  RunRecord forecast;
  for (const DatabaseState& database : state.databases) {
    if (database.missing) {
      continue;
    }
    DatabaseRecord record{.name = database.name, .bytes_before = database.file_bytes + database.wal_bytes};
    record.problem = database.problem ? database.problem->reason : "";
    for (const TableState& table : database.tables) {
      if (!table.missing && !database.problem && table.problem.empty()) {
        record.tables.push_back({.table = table.contract.table,
                                 .rows_before = table.rows,
                                 .rows_after = table.rows - table.next_pass.Sum(),
                                 .deleted = table.next_pass});
      }
    }
    forecast.databases.push_back(record);
  }
  return forecast;
}

std::string ReportPage(const ReportFacts& facts) {
  const Verdict verdict = VerdictOf(facts.state);
  return FillTemplate(templates::kPage,
                      {{"title", Title(facts.subject)},
                       {"directory", common::Utf8(facts.state.directory)},
                       {"moment", Moment(facts.state.now)},
                       {"version", CORVO_VERSION},
                       {"verdict_tone", verdict.tone},
                       {"verdict", (facts.subject == Subject::kRun ? "Now: " : "") + verdict.text},
                       {"tiles", Tiles(facts)},
                       {"contents", Contents(facts.subject)}},
                      {{"style", std::string(templates::kStyle)}, {"sections", Sections(facts)}});
}

}  // namespace corvo::telemetry::host
