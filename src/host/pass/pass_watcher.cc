#include "host/pass/pass_watcher.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

#include "common/log.h"
#include "common/text.h"
#include "host/pass/logging.h"
#include "host/pass/statement_kind.h"
#include "host/show/progress.h"
#include "storage/database_name.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

using Step = StatementKind::Step;

std::string FileName(const char* database_path) {
  return common::Utf8(std::filesystem::path(database_path).filename());
}

std::string DatabaseName(const shared::StatementRecord& statement) {
  return shared::RemoveDatabaseExtension(FileName(statement.database_path));
}

void Log(const shared::StatementRecord& statement) {
  const std::chrono::duration<double> seconds = statement.end - statement.start;
  const std::string outcome =
      statement.result.Failed() ? statement.result.what : fmt::format("{} rows changed", statement.rows_changed);
  CORVO_LOG(plog::debug, "Statement") << fmt::format("{}: {} -> {} in {:.3f} s", DatabaseName(statement), statement.sql,
                                                     outcome, seconds.count());
}

void AddTo(Visit& visit, const StatementKind& kind, std::int64_t rows) {
  Deleted& deleted = visit.tables[kind.table];
  if (kind.step == Step::kExpire) {
    deleted.expired += rows;
  } else {
    (visit.measured ? deleted.size_limit : deleted.row_limit) += rows;
  }
}

}  // namespace

PassWatcher::~PassWatcher() { EndProgress(); }

void PassWatcher::OnStart(const shared::StatementRecord& statement) noexcept {
  try {
    Show(statement);
  } catch (...) {
    EndProgress();  // Progress is a courtesy: the pass goes on without it.
  }
}

void PassWatcher::OnProgress(const shared::StatementRecord& statement) noexcept {
  constexpr std::chrono::seconds kLong{1};
  if (statement.end - statement.start >= kLong) {
    OnStart(statement);
  }
}

void PassWatcher::Show(const shared::StatementRecord& statement) {
  if (databases_ == 0) {
    return;
  }
  const StatementKind kind = KindOf(statement.sql);
  const std::lock_guard lock(mutex_);
  const auto done =
      std::count_if(visits_.begin(), visits_.end(), [](const auto& each) { return each.second.compacted; });
  ShowProgress({.database = DatabaseName(statement),
                .step = std::string(NameOf(kind.step)) + (kind.table.empty() ? "" : " " + kind.table),
                .share_done = static_cast<double>(done) / static_cast<double>(databases_),
                .since = statement.end > statement.start ? std::optional(statement.start) : std::nullopt});
}

bool PassWatcher::MayLeaveOutCompaction(const char* database_path) noexcept {
  try {
    const std::lock_guard lock(mutex_);
    const auto visit = visits_.find(FileName(database_path));
    return !incomplete_ && visit != visits_.end() && !visit->second.size_limit_acts;
  } catch (...) {
    return false;  // Without memory to see, what is always right.
  }
}

void PassWatcher::OnEnd(const shared::StatementRecord& statement) noexcept {
  try {
    Note(statement);
    Log(statement);
  } catch (...) {
    // No memory for the record of a statement, which may have failed: nothing of the pass counts as cleaned then.
    const std::lock_guard lock(mutex_);
    incomplete_ = true;
  }
}

void PassWatcher::Note(const shared::StatementRecord& statement) {
  const StatementKind kind = KindOf(statement.sql);
  const std::lock_guard lock(mutex_);
  Visit& visit = visits_[FileName(statement.database_path)];
  const std::chrono::duration<double> seconds = statement.end - statement.start;
  (kind.step == Step::kCompact ? visit.compaction_seconds : visit.seconds[kind.table]) += seconds.count();
  if (shared::IsMissingTable(statement.result)) {
    SpareInLog(statement.result);
  } else if (statement.result.Failed()) {
    if (shared::IsInterrupted(statement.result) && shared::StatementsInterrupted()) {
      SpareInLog(statement.result);
    }
    visit.failure = FailedStatement{statement.database_path, statement.sql, statement.result};
    last_failure_ = visit.failure;
  } else if (kind.step == Step::kExpire || kind.step == Step::kTrim) {
    AddTo(visit, kind, statement.rows_changed);
    rows_deleted_ += statement.rows_changed;
  }
  // Rows are counted once more only when the size limit is reached.
  visit.size_limit_acts =
      visit.size_limit_acts || (visit.measured && (kind.step == Step::kCount || kind.step == Step::kTrim));
  visit.measured = visit.measured || kind.step == Step::kMeasure;
  if (statement.left_out != nullptr) {
    visit.left_out = *statement.left_out;
  }
  visit.compacted = visit.compacted || (kind.step == Step::kCompact && !statement.result.Failed());
}

std::map<std::string, Visit> PassWatcher::Visits() const {
  const std::lock_guard lock(mutex_);
  return incomplete_ ? std::map<std::string, Visit>() : visits_;
}

std::optional<FailedStatement> PassWatcher::LastFailure() const {
  const std::lock_guard lock(mutex_);
  return last_failure_;
}

std::int64_t PassWatcher::RowsDeleted() const {
  const std::lock_guard lock(mutex_);
  return rows_deleted_;
}

}  // namespace corvo::telemetry::host
