#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "storage/statement_observer.h"

namespace corvo::telemetry::host {

/// Watches the statements of a pass: counts deleted rows, remembers which database failed, and on a terminal shows the
/// running statement in one line of standard error. Missing tables are spared in the log (`SpareInLog`).
class PassWatcher : public shared::StatementObserver {
 public:
  explicit PassWatcher(bool show) : show_(show) {}
  ~PassWatcher() override;
  PassWatcher(const PassWatcher&) = delete;
  PassWatcher& operator=(const PassWatcher&) = delete;

  void OnStart(const shared::StatementRecord& statement) noexcept override;
  void OnEnd(const shared::StatementRecord& statement) noexcept override;

  [[nodiscard]] std::int64_t RowsDeleted() const { return rows_deleted_; }

  /// Path of the database whose statement failed last; empty when none did. A missing table is no failure.
  [[nodiscard]] std::string FailedDatabase() const { return failed_database_; }

 private:
  bool show_;
  std::atomic<std::int64_t> rows_deleted_ = 0;
  std::string failed_database_;
};

}  // namespace corvo::telemetry::host
