#include "storage/connection/compaction.h"

#include <sqlite3.h>

#include <cstdint>

#include "storage/connection/statement.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

/// Of the database, in bytes.
struct Content {
  std::int64_t all = 0;
  std::int64_t free_pages = 0;
  std::int64_t unused = 0;  ///< within the other pages
};

// Pragmas, and not the tables of their names, which a file can have for itself.
Error Measure(sqlite3* handle, bool unused_too, Content& content) {
  std::int64_t page_size = 0;
  Error error = ReadNumber(handle, "PRAGMA main.page_size", page_size);
  if (!error.Failed()) {
    error = ReadNumber(handle, "PRAGMA main.page_count", content.all);
  }
  if (!error.Failed()) {
    error = ReadNumber(handle, "PRAGMA main.freelist_count", content.free_pages);
  }
  if (!error.Failed() && unused_too) {
    error = ReadNumber(handle, "SELECT SUM(unused) FROM dbstat", content.unused);
  }
  content.all *= page_size;
  content.free_pages *= page_size;
  return error;
}

double FreePercent(const Content& content) {
  const auto free = static_cast<double>(content.free_pages + content.unused);
  return content.all > 0 ? 100.0 * free / static_cast<double>(content.all) : 0;
}

}  // namespace

bool IsCompaction(std::string_view sql) { return sql == "VACUUM;"; }

Error JudgeCompaction(sqlite3* handle, const StorageOptions& options, std::optional<LeftOutCompaction>& left_out) {
  const bool by_share = options.compact_when_free > 0;
  const bool by_bytes = options.compaction_limit > 0;
  // Within a transaction SQLite refuses to compact, which stays so.
  if ((!by_share && !by_bytes) || sqlite3_get_autocommit(handle) == 0) {
    return {};
  }
  Content content;
  if (Error error = Measure(handle, by_share && options.count_unused_bytes, content); error.Failed()) {
    return error;
  }
  const double free_percent = FreePercent(content);
  const std::int64_t to_write = content.all - content.free_pages;
  using Reason = LeftOutCompaction::Reason;
  if (by_share && free_percent < options.compact_when_free) {
    left_out = LeftOutCompaction{Reason::kLittleToFree, free_percent, to_write};
  } else if (by_bytes && to_write > options.compaction_limit) {
    left_out = LeftOutCompaction{Reason::kTakesTooLong, free_percent, to_write};
  }
  return {};
}

}  // namespace corvo::shared
