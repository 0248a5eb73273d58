#include "host/samples/live_database.h"

#include <algorithm>
#include <ctime>
#include <system_error>

#include "common/text.h"
#include "host/facts/look.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTextLength = 12;

/// Whether there is a file that may be written: a link leads to one that somebody else keeps.
bool HasOrdinaryFile(const fs::path& file) {
  const fs::file_status status = fs::symlink_status(file);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    throw std::runtime_error(common::Utf8(file) + " is a link, a directory or something else that is no ordinary file");
  }
  return fs::exists(status);
}

}  // namespace

LiveDatabase::LiveDatabase(const DatabaseView& view, const std::vector<ContractView>& contracts,
                           const fs::path& directory, std::uint64_t seed)
    : name_(view.database), file_(DatabaseFile(view, directory)) {
  for (const ContractView& contract : contracts) {
    const TablePlan plan{contract.descriptor, contract.table, 1, 1, kTextLength};
    tables_.push_back({contract.table, ColumnsOf(*contract.descriptor), RowSource(plan, 0, seed)});
  }
}

std::vector<LiveTable*> LiveDatabase::Tables() {
  std::vector<LiveTable*> found;
  try {
    if (Open()) {
      for (LiveTable& table : tables_) {
        if (appender_->HasTable(table.name, table.columns)) {
          found.push_back(&table);
        }
      }
    }
  } catch (const DatabaseBusy&) {
    ++waits_;
    return {};
  } catch (const std::runtime_error& failure) {
    GiveUp(failure);
    return {};
  }
  return found;
}

std::int64_t LiveDatabase::Write(const std::vector<LiveTable*>& tables) {
  try {
    Append(tables);
    failures_ = 0;
    return static_cast<std::int64_t>(tables.size());
  } catch (const DatabaseBusy&) {
    appender_->Rollback();
    ++waits_;
  } catch (const std::runtime_error& failure) {
    appender_.reset();
    // A table or a file that went away in this moment is no problem: the next look shows it.
    if (++failures_ > 1) {
      GiveUp(failure);
    }
  }
  return 0;
}

bool LiveDatabase::Open() {
  if (!problem_.empty()) {
    return false;
  }
  const bool there = HasOrdinaryFile(file_);
  if (appender_ && !(there && appender_->IsInPlace())) {
    appender_.reset();
  }
  if (there && !appender_) {
    appender_ = std::make_unique<DatabaseAppender>(file_);
  }
  return there;
}

void LiveDatabase::Append(const std::vector<LiveTable*>& tables) {
  appender_->Begin();
  now_ = std::max<std::int64_t>(now_, std::time(nullptr));
  const LiveTable* current = nullptr;
  for (LiveTable* table : tables) {
    if (table != current) {
      appender_->StartRows(table->name, table->columns);
      current = table;
    }
    appender_->Insert(table->source.RowOf(now_));
  }
  appender_->Commit();
}

void LiveDatabase::GiveUp(const std::runtime_error& failure) {
  appender_.reset();
  problem_ = failure.what();
}

}  // namespace corvo::telemetry::host
