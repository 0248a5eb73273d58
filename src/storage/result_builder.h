#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <vector>

#include "common/error.h"
#include "storage/results.h"

struct sqlite3_stmt;

namespace corvo::shared {

/// Result rows while a statement runs: all texts and columns in one buffer that the finished rows share.
class ResultBuilder {
 public:
  /// Most bytes of one result, texts and bookkeeping together: a hostile file must not take the process's memory.
  static constexpr std::size_t kMaxBytes = std::size_t{256} * 1024 * 1024;

  /// Adds the row at which the statement stands.
  telemetry::common::Error Add(sqlite3_stmt* statement);

  /// Hands the rows over.
  [[nodiscard]] Rows Take();

 private:
  using Buffer = std::pmr::monotonic_buffer_resource;
  using RowList = std::vector<DynamicArray<Column>>;

  [[nodiscard]] telemetry::common::Error Reserve(std::size_t bytes);
  telemetry::common::Error AddText(sqlite3_stmt* statement, int column, Column& value);

  std::shared_ptr<Buffer> buffer_ = std::make_shared<Buffer>();
  std::shared_ptr<RowList> rows_ = std::make_shared<RowList>();
  std::size_t bytes_ = 0;
};

}  // namespace corvo::shared
