#include "host/facts/row_survey.h"

#include <fmt/core.h>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/query.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

// Of each row its `time` as `t`, and as `u` the moment that SQLite reads from it. Whole numbers are compared several
// times faster than the texts that the rule compares.

// "now" and its like are moments that move on. No other text that SQLite reads begins with a letter.
constexpr const char* kMoment =
    "CASE WHEN time COLLATE BINARY >= 'A' AND substr(CAST(time AS TEXT), 1, 1) GLOB '[A-Za-z]' THEN NULL "
    "ELSE unixepoch(time) END";
constexpr const char* kNoTime = "t IS NULL";
constexpr const char* kUnreadable = "t IS NOT NULL AND u IS NULL";
constexpr const char* kDate = "t GLOB '[0-9][0-9][0-9][0-9]-*' OR t GLOB '-[0-9][0-9][0-9][0-9]-*'";

std::int64_t RecentSince(const SurveyRequest& request) { return request.now - kRecentDays * common::kSecondsPerDay; }

/// The conditions on a row, in SQL: each decides most rows by one comparison.
class Conditions {
 public:
  explicit Conditions(const SurveyRequest& request) : request_(request) {
    // Nothing is older than a cutoff before 1970 or after the year 9999: there is no text for it.
    expires_ = request.cutoff && contracts::BrokenDownUtc(*request.cutoff);
  }

  [[nodiscard]] std::string Expired() const {
    // Some fractions of a second are rounded in one way and cut off in the other.
    return expires_ ? fmt::format("u < {0} + 2 AND (u < {0} - 1 OR datetime(t) < datetime({0}, 'unixepoch'))",
                                  *request_.cutoff)
                    : "0";
  }
  [[nodiscard]] std::string Ancient() const {
    return expires_ ? fmt::format("u < {} - 1 AND NOT ({})", *request_.cutoff, kDate) : "0";
  }
  [[nodiscard]] std::string Future() const { return fmt::format("u > {}", request_.now + common::kSecondsPerDay); }

 private:
  const SurveyRequest& request_;
  bool expires_;
};

// The limit, which is none, keeps SQLite from working each moment out again wherever it is used.
std::string SurveyQuery(const SurveyRequest& request) {
  const Conditions is(request);
  return fmt::format(
      "SELECT COUNT(*), COUNT(t), COUNT(u), MIN(u), MAX(u), COUNT(*) FILTER (WHERE {}), COUNT(*) FILTER (WHERE {}), "
      "COUNT(*) FILTER (WHERE {}), COUNT(*) FILTER (WHERE u < {}), COUNT(*) FILTER (WHERE u > {}), "
      "MIN(u) FILTER (WHERE u >= {}) FROM (SELECT time AS t, {} AS u FROM \"{}\" LIMIT -1)",
      is.Expired(), is.Future(), is.Ancient(), RecentSince(request), request.now, RecentSince(request), kMoment,
      request.table);
}

/// Finds the first row of the kind when the survey has counted any; it reads no further than to this one.
common::Error FindSample(TelemetryStorage& storage, const SurveyRequest& request, const std::string& condition,
                         OddRows& odd) {
  if (odd.rows == 0) {
    return {};
  }
  shared::Rows rows;
  common::Error error = RunStatement(
      storage,
      fmt::format("SELECT r, CASE typeof(t) WHEN 'null' THEN 'NULL' WHEN 'blob' THEN 'x''' || hex(substr(t, 1, 40)) || "
                  "'''' ELSE substr(t, 1, 100) END "
                  "FROM (SELECT {} AS r, time AS t, {} AS u FROM \"{}\" NOT INDEXED) WHERE {} ORDER BY r LIMIT 1",
                  request.has_rowids ? "rowid" : "0", kMoment, request.table, condition),
      &rows);
  if (!error.Failed() && rows.count == 1) {
    odd.rowid = NumberIn(rows[0][0]);
    odd.sample = rows[0][1].GetColumnValue();
  }
  return error;
}

void Fill(const shared::DynamicArray<shared::Column>& values, RowSurvey& survey) {
  survey.rows = NumberIn(values[0]);
  const std::int64_t with_time = NumberIn(values[1]);
  const std::int64_t readable = NumberIn(values[2]);
  survey.no_time.rows = survey.rows - with_time;
  survey.unreadable.rows = with_time - readable;
  survey.oldest = NumberOrNone(values[3]);
  survey.newest = NumberOrNone(values[4]);
  survey.expired = NumberIn(values[5]);
  survey.future.rows = NumberIn(values[6]);
  survey.ancient.rows = NumberIn(values[7]);
  survey.before_recent = NumberIn(values[8]);
  survey.recent = readable - survey.before_recent - NumberIn(values[9]);
  survey.oldest_recent = survey.recent == 0 ? std::nullopt : NumberOrNone(values[10]);
}

/// Odd rows are those that their table's retention cannot deal with as it should.
common::Error FindSamples(TelemetryStorage& storage, const SurveyRequest& request, RowSurvey& survey) {
  if (!request.cutoff) {
    survey.no_time = survey.unreadable = survey.future = {};
    return {};
  }
  const Conditions is(request);
  common::Error error = FindSample(storage, request, kNoTime, survey.no_time);
  if (!error.Failed()) {
    error = FindSample(storage, request, kUnreadable, survey.unreadable);
  }
  if (!error.Failed()) {
    error = FindSample(storage, request, is.Future(), survey.future);
  }
  return error.Failed() ? error : FindSample(storage, request, is.Ancient(), survey.ancient);
}

}  // namespace

common::Error SurveyRows(TelemetryStorage& storage, const SurveyRequest& request, RowSurvey& survey) {
  if (!request.has_time) {
    return AskNumber(storage, fmt::format("SELECT COUNT(*) FROM \"{}\"", request.table), survey.rows);
  }
  shared::Rows rows;
  common::Error error = RunStatement(storage, SurveyQuery(request), &rows);
  if (error.Failed() || rows.count != 1) {
    return error;
  }
  Fill(rows[0], survey);
  return FindSamples(storage, request, survey);
}

}  // namespace corvo::telemetry::host
