#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "host/facts/run_report.h"
#include "storage/statement_observer.h"

namespace corvo::telemetry::host {

/// What the statements of a pass did to one database.
struct Visit {
  std::map<std::string, Deleted> tables;  ///< by the name in the statement
  std::map<std::string, double> seconds;  ///< of the statements on each table, by its name
  double compaction_seconds = 0;
  std::optional<FailedStatement> failure;  ///< the last one, a missing table aside
  bool measured = false;                   ///< its size was asked for: trimming is for the size limit from then on
  bool size_limit_acts = false;            ///< its tables are trimmed for the size limit
  bool compacted = false;  ///< the last thing that a pass does to a database, also when the options left it out
  std::optional<shared::LeftOutCompaction> left_out;  ///< by the options
};

/// Watches the statements of a pass: what each of them deleted and by which rule, from its own count, which database
/// failed, and which was visited to the end. Logs each statement at the level of debugging, and shows on a terminal
/// which one runs. Missing tables, and what the user interrupted, are spared in the log (`SpareInLog`).
///
/// What was trimmed for its size limit is compacted, whatever the options of the storage leave out: only that makes the
/// file smaller, by which the next pass measures, and would trim again.
class PassWatcher : public shared::StatementObserver {
 public:
  /// @param databases how many databases the pass is for, for the share done that is shown; 0 shows nothing.
  explicit PassWatcher(std::size_t databases) : databases_(databases) {}
  ~PassWatcher() override;
  PassWatcher(const PassWatcher&) = delete;
  PassWatcher& operator=(const PassWatcher&) = delete;

  void OnStart(const shared::StatementRecord& statement) noexcept override;
  void OnProgress(const shared::StatementRecord& statement) noexcept override;
  [[nodiscard]] bool MayLeaveOutCompaction(const char* database_path) noexcept override;
  void OnEnd(const shared::StatementRecord& statement) noexcept override;

  /// By file name: what was watched until now; nothing when any of it could not be recorded.
  [[nodiscard]] std::map<std::string, Visit> Visits() const;

  /// The statement that failed last, a missing table aside.
  [[nodiscard]] std::optional<FailedStatement> LastFailure() const;

  [[nodiscard]] std::int64_t RowsDeleted() const;

 private:
  void Note(const shared::StatementRecord& statement);
  void Show(const shared::StatementRecord& statement);

  const std::size_t databases_;
  mutable std::mutex mutex_;
  std::map<std::string, Visit> visits_;
  std::optional<FailedStatement> last_failure_;
  std::int64_t rows_deleted_ = 0;
  bool incomplete_ = false;  ///< a statement could not be recorded
};

}  // namespace corvo::telemetry::host
