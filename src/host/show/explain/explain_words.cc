#include "host/show/explain/explain_words.h"

#include <fmt/core.h>

#include <cmath>

#include "host/facts/growth.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string FateText(const RowExplanation& row, const Explanation& explanation) {
  const Deleted& next = explanation.table.next_pass;
  switch (row.next_pass) {
    case Rule::kAge:
      return fmt::format("the next pass deletes it: it is older than {}", Days(explanation.reach.age_days.value_or(0)));
    case Rule::kRowLimit:
      return fmt::format("the next pass deletes it for the row limit: it is among the oldest {} by rowid",
                         WithSeparators(next.row_limit));
    case Rule::kSizeLimit:
      return fmt::format("the next pass deletes it for the size limit: it is among the oldest {} by rowid",
                         WithSeparators(next.row_limit + next.size_limit));
    case Rule::kNone:
      break;
  }
  return explanation.left_alone.empty() ? "the next pass keeps it" : "the next run leaves its database alone";
}

std::string ExpiryText(const RowExplanation& row, const ContractView& contract) {
  if (contract.retention_days == 0) {
    return "never: rows of this table are kept for ever";
  }
  if (!row.row.moment) {
    return "never: SQLite reads no moment from its time";
  }
  return row.expires ? "goes after " + TimeText(*row.expires) : "never: its time lies too far ahead";
}

std::string RowLimitText(const RowExplanation& row) {
  if (!row.rows_until_limit) {
    return "never: there is none";
  }
  const std::string rows = fmt::format("when {} {} come in", Counted(*row.rows_until_limit, "more row"),
                                       *row.rows_until_limit == 1 ? "has" : "have");
  return row.days_until_limit ? fmt::format("goes in {}, {}", Days(*row.days_until_limit), rows)
                              : fmt::format("goes {}; none came in within the last week", rows);
}

std::string SizeLimitText(const Explanation& explanation) {
  return explanation.database.max_size_mb == 0 || explanation.contract.max_size_mb == 0
             ? "never: there is none"
             : fmt::format("may go once the database reaches {} MB", explanation.contract.max_size_mb);
}

}  // namespace

std::string Days(double days) {
  const double rounded = days < 9.95 ? std::round(days * 10) / 10 : std::round(days);
  const std::string number = rounded < 9.95 ? fmt::format("{:g}", rounded) : WithSeparators(std::llround(rounded));
  return fmt::format("{} day{}", number, rounded == 1 ? "" : "s");
}

std::vector<std::string> RowLines(const RowExplanation& row, const Explanation& explanation) {
  std::vector<std::string> lines = {"time " + row.row.time, FateText(row, explanation)};
  if (row.next_pass == Rule::kNone) {
    lines.push_back("age: " + ExpiryText(row, explanation.contract));
    lines.push_back("row limit: " + RowLimitText(row));
    lines.push_back("size limit: " + SizeLimitText(explanation));
  }
  return lines;
}

}  // namespace corvo::telemetry::host
