#include <fmt/core.h>

#include <algorithm>

#include "common/timestamp.h"
#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/time_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

// Heights are in percent; a class is ten units wide. Now is at the right end.
constexpr double kClassWidth = 10;
constexpr double kGap = 1;

/// One histogram: where its classes lie, and which of them a pass would delete.
class Histogram {
 public:
  Histogram(const RowAges& ages, std::optional<std::int64_t> kept_seconds)
      : ages_(ages),
        kept_days_(kept_seconds ? std::optional(static_cast<double>(*kept_seconds) / common::kSecondsPerDay)
                                : std::nullopt),
        most_(std::max({*std::max_element(ages.rows.begin(), ages.rows.end()), ages.older, std::int64_t{1}})) {}

  [[nodiscard]] double Width() const { return X(-1); }
  [[nodiscard]] std::int64_t Most() const { return most_; }

  [[nodiscard]] Json Bars() const {
    Json bars = Json::array();
    if (ages_.older > 0) {
      bars.push_back(BarOf(0, ages_.older, kept_days_.has_value(),
                           fmt::format("more than {} old", Counted(ages_.scale.classes * ages_.scale.days, "day"))));
    }
    for (std::int64_t index = ages_.scale.classes - 1; index >= 0; --index) {
      const std::int64_t rows = ages_.rows.at(static_cast<std::size_t>(index));
      if (rows > 0) {
        const std::int64_t youngest = index * ages_.scale.days;
        bars.push_back(BarOf(X(index), rows, kept_days_ && static_cast<double>(youngest) >= *kept_days_,
                             fmt::format("{} to {} old", youngest, Counted(youngest + ages_.scale.days, "day"))));
      }
    }
    return bars;
  }

  /// The place of the retention, in percent of the width; null when there is none, or it is further than the classes.
  [[nodiscard]] Json Line() const {
    const double classes = kept_days_.value_or(0) / static_cast<double>(ages_.scale.days);
    if (!kept_days_ || classes > static_cast<double>(ages_.scale.classes)) {
      return nullptr;
    }
    return Percent(Width() - classes * kClassWidth, Width());
  }

 private:
  /// The left end of a class, which is the right end of the one before it. What is older than all of them has a bar of
  /// its own, one class apart.
  [[nodiscard]] double X(std::int64_t index) const {
    const double first = ages_.older > 0 ? 2 * kClassWidth : 0;
    return first + kClassWidth * static_cast<double>(ages_.scale.classes - 1 - index);
  }

  [[nodiscard]] Json BarOf(double x, std::int64_t rows, bool expired, const std::string& age) const {
    const double height = std::max(100 * static_cast<double>(rows) / static_cast<double>(most_), 1.5);
    return {{"x", fmt::format("{:.1f}", x + kGap / 2)},
            {"y", fmt::format("{:.2f}", 100 - height)},
            {"width", fmt::format("{:.1f}", kClassWidth - kGap)},
            {"height", fmt::format("{:.2f}", height)},
            {"tone", expired ? "expired" : "kept"},
            {"rows", rows},
            {"label", fmt::format("{}, {}", Counted(rows, "row"), age)}};
  }

  const RowAges& ages_;
  std::optional<double> kept_days_;
  std::int64_t most_;
};

std::string Remarks(const RowAges& ages) {
  std::string remarks;
  for (const auto& [rows, text] : {std::pair(ages.older, "older than shown"), std::pair(ages.future, "in the future"),
                                   std::pair(ages.undated, "without a readable time")}) {
    if (rows > 0) {
      remarks += fmt::format("{}{} {}", remarks.empty() ? "" : "; ", WithSeparators(rows), text);
    }
  }
  return remarks;
}

Json TableJson(const TableState& table, const RowAges& ages, std::int64_t now) {
  const auto kept = KeptSeconds(table.contract, now);
  const Histogram histogram(ages, kept);
  return {{"table", table.contract.table},
          {"kept", kept ? "kept " + Days(*kept) : "kept for ever"},
          {"width", fmt::format("{:.0f}", histogram.Width())},
          {"bars", histogram.Bars()},
          {"line", histogram.Line()},
          {"scale", fmt::format("{} at most in {}", Counted(histogram.Most(), "row"),
                                ages.scale.days == 1 ? "a day" : Counted(ages.scale.days, "day"))},
          {"first", Counted(ages.scale.classes * ages.scale.days, "day")},
          {"older", ages.older > 0},
          {"remarks", Remarks(ages)}};
}

/// None of its tables may have rows to show.
Json DatabaseJson(const DatabaseState& database, const std::vector<std::optional<RowAges>>& ages, std::int64_t now) {
  Json tables = Json::array();
  for (std::size_t table = 0; table < ages.size(); ++table) {
    if (ages[table]) {
      tables.push_back(TableJson(database.tables.at(table), *ages[table], now));
    }
  }
  return {{"database", database.name}, {"tables", tables}};
}

}  // namespace

std::string AgesSection(const ReportFacts& facts) {
  Json databases = Json::array();
  for (std::size_t index = 0; index < facts.ages.size(); ++index) {
    Json database = DatabaseJson(facts.state.databases.at(index), facts.ages[index], facts.state.now);
    if (!database["tables"].empty()) {
      databases.push_back(std::move(database));
    }
  }
  return FillTemplate(
      templates::kAges,
      {{"moment", Moment(facts.state.now)}, {"has_rows", !databases.empty()}, {"databases", databases}});
}

}  // namespace corvo::telemetry::host
