#include "host/show/explain/explain_text.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/text.h"
#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/growth.h"
#include "host/show/explain/explain_words.h"
#include "host/show/paragraphs.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string Rate(double rows_per_day) {
  return rows_per_day < 9.95 ? fmt::format("{:.1f}", rows_per_day) : WithSeparators(std::llround(rows_per_day));
}

/// Types of the project's own package are known by what follows its name.
std::string ShortType(const std::string& type) {
  const std::string package = "corvo.telemetry.contract.storage.";
  return type.starts_with(package) ? type.substr(package.size()) : type;
}

std::string AgeLimit(const ContractView& contract) {
  if (contract.retention_days == 0) {
    return "none (table_options.retention_days is 0): rows are kept for ever";
  }
  const std::int64_t kept = KeptSeconds(contract.retention_days);
  return fmt::format("{} (table_options.retention_days){}", Counted(contract.retention_days, "day"),
                     kept == std::int64_t{contract.retention_days} * common::kSecondsPerDay
                         ? ""
                         : fmt::format(": more than 32 bits hold, so that it acts like {}",
                                       Days(static_cast<double>(kept) / common::kSecondsPerDay)));
}

std::string RowLimit(const ContractView& contract) {
  if (contract.max_rows == 0) {
    return "none (table_options.max_rows is 0)";
  }
  return fmt::format("{} (table_options.max_rows): {}", Counted(contract.max_rows, "row"),
                     LimitsRows(contract.max_rows)
                         ? fmt::format("a pass leaves {}", WithSeparators(RowsKept(contract.max_rows)))
                         : "more than 32 bits hold, so that it keeps every row");
}

std::string SizeLimit(const Explanation& explanation) {
  const std::uint32_t limit = explanation.contract.max_size_mb;
  if (limit == 0) {
    return "none (database_options.max_size_mb is 0)";
  }
  const std::uint32_t of_database = explanation.database.max_size_mb;
  return fmt::format(
      "{} MB (database_options.max_size_mb) for the whole database; {}", WithSeparators(limit),
      of_database == 0 ? "switched off: that of the database itself is 0"
                       : fmt::format("switched on by that of the database itself, {} MB", WithSeparators(of_database)));
}

std::vector<std::string> NowText(const Explanation& explanation) {
  const TableState& table = explanation.table;
  if (explanation.missing_file || table.missing) {
    return {explanation.missing_file ? "the database has no file yet" : "the table does not exist yet"};
  }
  std::string text = table.rows == 0 ? "no rows" : Counted(table.rows, "row");
  if (table.oldest && table.newest) {
    text += fmt::format(" of {} to {}", TimeText(*table.oldest).substr(0, 10), TimeText(*table.newest).substr(0, 10));
  }
  text += table.rows_per_day > 0 ? fmt::format("; {} come in a day", Rate(table.rows_per_day))
                                 : "; none came in within the last week";
  std::vector<std::string> lines = {text};
  if (const std::int64_t never = table.no_time.rows + table.unreadable.rows; never > 0) {
    lines.push_back(fmt::format("{} can never expire: SQLite reads no moment from the time", Counted(never, "row")));
  }
  if (explanation.database.max_size_mb != 0) {
    lines.push_back(fmt::format("the size limit sees the whole database as {} MB, in whole MB; its file has {}",
                                explanation.engine_mb, HumanBytes(explanation.file_bytes)));
  }
  return lines;
}

std::string AgeFirst(const Reach& reach, bool by_rows) {
  const std::string asked = fmt::format("age: {} asked", Days(*reach.age_days));
  if (reach.row_limit_days) {
    return asked + fmt::format("; at today's rate the row limit would leave {}", Days(*reach.row_limit_days));
  }
  return asked + (by_rows ? "; no rows come in that could reach the row limit" : "");
}

std::string RowLimitFirst(const Reach& reach) {
  if (!reach.row_limit_days) {
    return "the row limit, once rows come in";
  }
  const std::string left = "at today's rate it leaves " + Days(*reach.row_limit_days);
  return reach.age_days ? fmt::format("the row limit: {} asked, {}", Days(*reach.age_days), left)
                        : "the row limit: " + left;
}

std::string FirstText(const Explanation& explanation) {
  switch (explanation.reach.first) {
    case Rule::kAge:
      return AgeFirst(explanation.reach, LimitsRows(explanation.contract.max_rows));
    case Rule::kRowLimit:
      return RowLimitFirst(explanation.reach);
    case Rule::kSizeLimit:
      return "the size limit, the only one";
    case Rule::kNone:
      break;
  }
  return "none: nothing limits this table";
}

/// What each rule takes, in their order.
std::vector<std::string> NextPassText(const Explanation& explanation) {
  const ContractView& contract = explanation.contract;
  const Deleted& next = explanation.table.next_pass;
  if (!explanation.left_alone.empty()) {
    return {fmt::format("none: a run leaves the database alone as it is, because {}", explanation.left_alone)};
  }
  std::vector<std::string> lines = {next.Sum() == 0 ? "deletes nothing"
                                                    : fmt::format("deletes {} of {}:", WithSeparators(next.Sum()),
                                                                  Counted(explanation.table.rows, "row"))};
  if (next.expired > 0) {
    const std::int64_t cutoff = contracts::Cutoff(explanation.now, contract.retention_days);
    lines.push_back(fmt::format("{} expired: older than {}", WithSeparators(next.expired), TimeText(cutoff)));
  }
  if (next.row_limit > 0) {
    lines.push_back(fmt::format("{} for the row limit: the oldest by rowid, down to {}", WithSeparators(next.row_limit),
                                Counted(RowsKept(contract.max_rows), "row")));
  }
  if (next.size_limit > 0) {
    lines.push_back(
        fmt::format("{} for the size limit: {:.0f} % of the rows left, the oldest by rowid, as the database "
                    "is at {} of {} MB",
                    WithSeparators(next.size_limit), std::min(explanation.trim_factor, 1.0) * 100,
                    explanation.engine_mb, contract.max_size_mb));
  }
  return lines;
}

std::string RowidsText(const Explanation& explanation) {
  return explanation.rowids_may_change ? "compaction may renumber them: no column is an INTEGER PRIMARY KEY"
                                       : "stay as they are: a column is the INTEGER PRIMARY KEY";
}

}  // namespace

std::string ExplainText(const Explanation& explanation, std::size_t width, bool colour) {
  const ContractView& contract = explanation.contract;
  Paragraphs page(width, colour);
  page.Add("Table", {fmt::format("{} in {}", contract.table, contract.database)});
  page.Add("File", {common::Utf8(explanation.path)});
  page.Add("Contract", {ShortType(contract.type)});
  page.AddBlank();
  page.Add("Age limit", {AgeLimit(contract)});
  page.Add("Row limit", {RowLimit(contract)});
  page.Add("Size limit", {SizeLimit(explanation)});
  page.AddBlank();
  page.Add("Now", NowText(explanation));
  if (!explanation.missing_file && !explanation.table.missing) {
    page.Add("Bites first", {FirstText(explanation)});
    page.Add("Next pass", NextPassText(explanation));
    page.Add("Rowids", {RowidsText(explanation)});
  }
  for (const RowExplanation& row : explanation.rows) {
    page.AddBlank();
    page.Add(fmt::format("Row {}", row.row.rowid), RowLines(row, explanation));
  }
  return page.Text();
}

}  // namespace corvo::telemetry::host
