#include "host/show/verify/history_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>

#include "common/text.h"
#include "host/show/text_table.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string When(const RunRecord& run) {
  std::string text = TimeText(run.start);
  std::replace(text.begin(), text.end(), 'T', ' ');
  return text.substr(0, text.find('+'));
}

/// Of the passes, as the run itself has told.
std::string HowLong(const RunRecord& run) {
  const auto whole = static_cast<std::int64_t>(run.seconds);
  return whole >= 60 ? fmt::format("{} min {} s", whole / 60, whole % 60) : fmt::format("{:.1f} s", run.seconds);
}

std::string NumberOrNothing(std::int64_t number) { return number == 0 ? "" : WithSeparators(number); }

std::string Freed(const RunRecord& run) {
  const std::int64_t bytes = run.BytesFreed();
  return bytes < 0 ? "grew " + HumanBytes(-bytes) : HumanBytes(bytes);
}

std::string Result(const RunRecord& run) {
  const auto cleaned = std::count_if(run.databases.begin(), run.databases.end(),
                                     [](const DatabaseRecord& database) { return database.problem.empty(); });
  const auto all = static_cast<std::ptrdiff_t>(run.databases.size());
  return fmt::format("{}{} cleaned", run.signal != 0 ? "interrupted, " : "",
                     cleaned == all ? std::to_string(all) : fmt::format("{} of {}", cleaned, all));
}

/// How many databases the options of the run left uncompacted.
std::string NotCompacted(const RunRecord& run) {
  return NumberOrNothing(std::count_if(run.databases.begin(), run.databases.end(),
                                       [](const DatabaseRecord& database) { return !database.not_compacted.empty(); }));
}

/// A column of the table. Those that say nothing in any line are left out.
struct Column {
  const char* head;
  Align align;
  std::function<std::string(const RunRecord&)> cell;
};

const std::vector<Column>& Columns() {
  static const std::vector<Column> columns = {
      {"WHEN (UTC)", Align::kLeft, &When},
      {"TOOK", Align::kRight, &HowLong},
      {"EXPIRED", Align::kRight, [](const RunRecord& run) { return NumberOrNothing(run.DeletedRows().expired); }},
      {"ROW LIMIT", Align::kRight, [](const RunRecord& run) { return NumberOrNothing(run.DeletedRows().row_limit); }},
      {"SIZE LIMIT", Align::kRight, [](const RunRecord& run) { return NumberOrNothing(run.DeletedRows().size_limit); }},
      {"FREED", Align::kRight, &Freed},
      {"NOT COMPACTED", Align::kRight, &NotCompacted},
      {"RESULT", Align::kLeft, &Result},
  };
  return columns;
}

std::string Table(const std::vector<RunRecord>& runs, bool colour) {
  std::vector<TableLine> lines = {{{}, Tone::kFaint}};
  for (const RunRecord& run : runs) {
    lines.push_back({{}, run.result.empty() ? Tone::kPlain : Tone::kWarning});
  }
  std::vector<Align> alignments;
  for (const Column& column : Columns()) {
    if (std::none_of(runs.begin(), runs.end(), [&](const RunRecord& run) { return !column.cell(run).empty(); })) {
      continue;
    }
    alignments.push_back(column.align);
    lines[0].cells.emplace_back(column.head);
    for (std::size_t run = 0; run < runs.size(); ++run) {
      lines[run + 1].cells.push_back(column.cell(runs[run]));
    }
  }
  return FormatTable(lines, alignments, colour);
}

/// Why not all was cleaned, with the reason of each database, or of the run where no database tells it.
std::string Reasons(const RunRecord& run) {
  std::string text;
  for (const DatabaseRecord& database : run.databases) {
    if (!database.problem.empty()) {
      text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", Printable(database.name), Printable(database.problem));
    }
  }
  return text.empty() ? Printable(run.result) : "not cleaned: " + text;
}

}  // namespace

std::string HistoryText(const DataDirectory& directory, const std::vector<RunRecord>& runs, bool colour) {
  const std::string place =
      fmt::format("{} ({})", Printable(common::Utf8(directory.path)), Printable(directory.origin));
  if (runs.empty()) {
    return fmt::format("No run is recorded in {}\n", place);
  }
  std::string reasons;
  for (const RunRecord& run : runs) {
    reasons += run.result.empty() ? "" : fmt::format("{}: {}\n", When(run), Reasons(run));
  }
  return fmt::format("{}\n\n{}{}{}", place, Table(runs, colour), reasons.empty() ? "" : "\n", reasons);
}

}  // namespace corvo::telemetry::host
