#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/show/json_text.h"
#include "host/show/report/report_page.h"

namespace corvo::telemetry::host {

// The sections of the page, each as HTML, and what they have in common. The templates are the files of this folder,
// built into the program.

namespace templates {
extern const std::string_view kPage;
extern const std::string_view kStyle;
extern const std::string_view kLimits;
extern const std::string_view kChange;
extern const std::string_view kAges;
extern const std::string_view kTimings;
extern const std::string_view kHistory;
}  // namespace templates

/// Databases and tables against their limits, as they are now.
[[nodiscard]] std::string LimitsSection(const DirectoryState& state);

/// A table against its limits, for that section.
[[nodiscard]] Json TableLimits(const TableState& table, std::int64_t now);

/// A bar that ends at the limit, or at the value when that is beyond it: then the limit is a mark inside.
[[nodiscard]] Json LimitBar(double value, double limit);

/// What the pass deletes or has deleted, before and after.
[[nodiscard]] std::string ChangeSection(const ReportFacts& facts);

/// The rows of each table by age, with the retention as a line.
[[nodiscard]] std::string AgesSection(const ReportFacts& facts);

/// How long the statements took: of the plan or the run, else of the last run.
[[nodiscard]] std::string TimingsSection(const ReportFacts& facts);

/// The last runs.
[[nodiscard]] std::string HistorySection(const ReportFacts& facts);

/// A number as programs read it (`value`) and as people do (`text`).
[[nodiscard]] Json Figure(std::int64_t number);

/// Bytes as programs read them (`value`) and as people do (`text`).
[[nodiscard]] Json Size(std::int64_t bytes);

/// The rows of each rule, each a `Figure`: `expired`, `row_limit`, `size_limit`; and `deleted`, their sum.
void PutDeleted(Json& object, const Deleted& deleted);

/// The share in percent for a style: from 0 to 100, with two digits behind the point; 0 when the whole is not positive.
[[nodiscard]] std::string Percent(double part, double whole);

/// "2024-05-01 12:30 UTC"; a time that no calendar names is "at an unknown time".
[[nodiscard]] std::string Moment(std::int64_t seconds);

/// "0.25 s", "3 ms", "2 min 5 s".
[[nodiscard]] std::string Duration(double seconds);

/// A time span in whole days, "less than a day" below one.
[[nodiscard]] std::string Days(std::int64_t seconds);

/// The element that names a row's reason in styles and legends: its own colour and pattern.
struct Reason {
  const char* name;   ///< of its class
  const char* label;  ///< for people
  std::int64_t Deleted::*rows;
};

/// In the order of the rules.
[[nodiscard]] const std::vector<Reason>& Reasons();

/// The reasons with their labels.
[[nodiscard]] Json Legend();

}  // namespace corvo::telemetry::host
