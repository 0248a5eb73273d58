#include "host/pass/pass_watcher.h"

#include <fmt/core.h>

#include <filesystem>

#include "common/text.h"
#include "host/pass/logging.h"
#include "host/show/standard_error.h"
#include "host/show/units.h"
#include "storage/result_code.h"

namespace corvo::telemetry::host {

PassWatcher::~PassWatcher() { ClearProgress(); }

void PassWatcher::OnStart(const shared::StatementRecord& statement) noexcept {
  if (!show_) {
    return;
  }
  try {
    const std::string file = common::Utf8(std::filesystem::path(statement.database_path).stem());
    ShowProgress(fmt::format("{}: {} deleted, now {}", file, Counted(rows_deleted_, "row"), statement.sql));
  } catch (...) {
    show_ = false;  // Progress is a courtesy: the pass goes on without it.
  }
}

void PassWatcher::OnEnd(const shared::StatementRecord& statement) noexcept {
  rows_deleted_ += statement.rows_changed;
  try {
    if (shared::IsMissingTable(statement.result)) {
      SpareInLog(statement.result);
    } else if (statement.result.Failed()) {
      failed_database_ = statement.database_path;
    }
  } catch (...) {
    failed_database_.clear();  // Better no name than one cut short by a lack of memory.
  }
}

}  // namespace corvo::telemetry::host
