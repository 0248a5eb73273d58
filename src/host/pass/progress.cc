#include "host/pass/progress.h"

#include <fmt/core.h>

#include <filesystem>

#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kLineWidth = 79;
bool line_shown = false;

}  // namespace

void ClearProgress() {
  if (line_shown) {
    fmt::print(stderr, "\r{:{}}\r", "", kLineWidth);
    line_shown = false;
  }
}

PassWatcher::~PassWatcher() { ClearProgress(); }

void PassWatcher::OnStart(const shared::StatementRecord& statement) noexcept {
  if (!show_) {
    return;
  }
  try {
    const std::string file = common::Utf8(std::filesystem::path(statement.database_path).stem());
    const std::string line =
        fmt::format("{}: {} deleted, now {}", file, Counted(rows_deleted_, "row"), statement.sql).substr(0, kLineWidth);
    fmt::print(stderr, "\r{:<{}}", line, kLineWidth);
    std::fflush(stderr);
    line_shown = true;
  } catch (...) {
    show_ = false;  // Progress is a courtesy: the pass goes on without it.
  }
}

void PassWatcher::OnEnd(const shared::StatementRecord& statement) noexcept {
  rows_deleted_ += statement.rows_changed;
  const bool failed = statement.result.Failed() && statement.result.what.find("no such table:") == std::string::npos;
  if (failed) {
    try {
      failed_database_ = statement.database_path;
    } catch (...) {
      failed_database_.clear();
    }
  }
}

}  // namespace corvo::telemetry::host
