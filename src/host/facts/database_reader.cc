#include "host/facts/database_reader.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/file_problem.h"
#include "host/facts/forecast.h"
#include "host/facts/growth.h"
#include "host/facts/query.h"
#include "host/facts/table_check.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

std::optional<std::int64_t> CutoffOf(const ContractView& contract, std::int64_t now) {
  return contract.retention_days == 0 ? std::nullopt : std::optional(contracts::Cutoff(now, contract.retention_days));
}

double InDays(std::int64_t seconds) {
  return static_cast<double>(seconds) / static_cast<double>(common::kSecondsPerDay);
}

double RowsPerDay(const RowSurvey& survey, std::int64_t now) {
  // A table that was begun, or trimmed, a few days ago has not had the time for a week's rows.
  const bool whole = survey.before_recent > survey.ancient.rows || !survey.oldest_recent;
  const double days = whole ? static_cast<double>(kRecentDays) : std::max(InDays(now - *survey.oldest_recent), 1.0);
  return static_cast<double>(survey.recent) / days;
}

Growth GrowthOf(const TableState& table, const RowSurvey& survey, std::int64_t now) {
  const auto cutoff = CutoffOf(table.contract, now);
  const std::int64_t oldest = std::max(survey.oldest.value_or(now), cutoff.value_or(0));
  return {.rows = survey.rows - survey.expired,
          .never_expire = survey.no_time.rows + survey.unreadable.rows,
          .rows_per_day = table.rows_per_day,
          .days_covered = std::max(InDays(now - oldest), 0.0),
          .retention_days = cutoff ? InDays(now - *cutoff) : 0,
          .max_rows = table.contract.max_rows};
}

/// Reads one database, in the transaction that its caller has begun.
class DatabaseReader {
 public:
  DatabaseReader(TelemetryStorage& storage, DatabaseState& database, std::int64_t now)
      : storage_(storage), database_(database), now_(now) {}

  [[nodiscard]] common::Error Read() {
    common::Error error = ReadPages();
    for (TableState& table : database_.tables) {
      if (error.Failed()) {
        return error;
      }
      error = ReadTable(table);
    }
    if (!error.Failed()) {
      Measure();
      Foresee();
    }
    return error;
  }

 private:
  common::Error ReadPages() {
    shared::Rows rows;
    common::Error error =
        RunStatement(storage_,
                     "SELECT page_count * page_size, freelist_count * page_size, journal_mode, page_size "
                     "FROM pragma_page_count, pragma_freelist_count, pragma_page_size, "
                     "pragma_journal_mode",
                     &rows);
    std::int64_t auto_vacuum = 0;
    if (!error.Failed()) {
      error = AskNumber(storage_, "PRAGMA auto_vacuum", auto_vacuum);
    }
    shrinks_ = auto_vacuum == 1;
    if (!error.Failed() && rows.count == 1) {
      content_bytes_ = NumberIn(rows[0][0]);
      database_.free_bytes = NumberIn(rows[0][1]);
      database_.live_bytes = content_bytes_ - database_.free_bytes;
      logged_ = std::string_view(rows[0][2].GetColumnValue()) == "wal";
      database_.page_bytes = NumberIn(rows[0][3]);
    }
    return error;
  }

  /// What stands against one table stands against it alone, unless nothing more can be read.
  common::Error ReadTable(TableState& table) {
    TableCheck check;
    common::Error error = CheckTable(storage_, table.contract, check);
    table.missing = check.missing;
    table.problem = check.misread;
    RowSurvey survey;
    if (!error.Failed() && !table.missing && table.problem.empty()) {
      error = Survey(table, check, survey);
    }
    counts_.tables.push_back({.rows = survey.rows,
                              .expired = survey.expired,
                              .max_rows = table.contract.max_rows,
                              .max_size_mb = table.contract.max_size_mb,
                              .missing = table.missing});
    // What took too long in one table would in the others.
    const bool alone = error.Failed() && !shared::IsBusy(error) && !shared::IsInterrupted(error);
    if (alone) {
      table.unread = true;
      table.problem = ProblemOf(error, database_.path, Access::kRead).reason;
      table.record = error;
    }
    return alone ? common::Error() : error;
  }

  common::Error Survey(TableState& table, const TableCheck& check, RowSurvey& survey) {
    common::Error error = SurveyRows(storage_,
                                     {.table = table.contract.table,
                                      .has_time = check.has_time,
                                      .has_rowids = check.has_rowids,
                                      .cutoff = CutoffOf(table.contract, now_),
                                      .now = now_},
                                     survey);
    if (!error.Failed()) {
      Fill(table, survey);
      AskEngineSize(table);
    }
    return error;
  }

  void Fill(TableState& table, const RowSurvey& survey) const {
    table.rows = survey.rows;
    table.oldest = survey.oldest;
    table.newest = survey.newest;
    table.no_time = survey.no_time;
    table.unreadable = survey.unreadable;
    table.future = survey.future;
    table.ancient = survey.ancient;
    table.rows_per_day = RowsPerDay(survey, now_);
    table.days_to_row_limit = DaysToRowLimit(GrowthOf(table, survey, now_));
  }

  /// The engine looks at the first row alone, and takes a figure that it does not get for 0.
  void AskEngineSize(TableState& table) {
    shared::Rows rows;
    const common::Error error = RunStatement(
        storage_, fmt::format("SELECT pgsize, pageno FROM dbstat WHERE name = '{}' LIMIT 1", table.contract.table),
        &rows);
    if (!error.Failed() && rows.count == 1) {
      table.engine_mb = contracts::Megabytes(static_cast<std::int32_t>(NumberIn(rows[0][0])),
                                             static_cast<std::int32_t>(NumberIn(rows[0][1])));
    }
  }

  void Measure() {
    for (const TableState& table : database_.tables) {
      database_.engine_mb += static_cast<std::uint32_t>(table.engine_mb);
    }
    if (database_.engine_mb == 0) {
      // By the time that it is measured, a pass has moved a write-ahead log into the file, and a deletion may have cut
      // the file to its pages.
      const bool cut = logged_ || (shrinks_ && DeletesBeforeMeasuring());
      const std::int64_t bytes = cut ? content_bytes_ : database_.file_bytes;
      database_.engine_mb = static_cast<std::uint32_t>(bytes / 1'000'000);
    }
    counts_.max_size_mb = database_.max_size_mb;
    counts_.size_mb = database_.engine_mb;
  }

  [[nodiscard]] bool DeletesBeforeMeasuring() const {
    DatabaseCounts counts = counts_;
    counts.max_size_mb = 0;
    const std::vector<Deleted> deleted = Forecast(counts);
    return std::any_of(deleted.begin(), deleted.end(), [](const Deleted& each) { return each.Sum() > 0; });
  }

  void Foresee() {
    const auto unfit = [](const TableState& table) { return !table.problem.empty(); };
    if (std::any_of(database_.tables.begin(), database_.tables.end(), unfit)) {
      return;
    }
    database_.trim_factor = TrimShare(counts_, database_.max_size_mb);
    const std::vector<Deleted> deleted = Forecast(counts_);
    for (std::size_t index = 0; index < deleted.size(); ++index) {
      database_.tables[index].next_pass = deleted[index];
    }
  }

  TelemetryStorage& storage_;
  DatabaseState& database_;
  std::int64_t now_;
  std::int64_t content_bytes_ = 0;
  bool logged_ = false;   ///< it has a write-ahead log
  bool shrinks_ = false;  ///< free pages leave the file with the transaction that frees them
  DatabaseCounts counts_;
};

}  // namespace

common::Error ReadDatabase(DatabaseState& database, std::int64_t now) {
  TelemetryStorage storage(database.path.string().c_str(), "");
  common::Error error = storage.GetLastError();
  if (!error.Failed()) {
    error = RunStatement(storage, "BEGIN");
  }
  return error.Failed() ? error : DatabaseReader(storage, database, now).Read();
}

}  // namespace corvo::telemetry::host
