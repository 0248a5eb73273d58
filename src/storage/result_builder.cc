#include "storage/result_builder.h"

#include <sqlite3.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "storage/failure.h"

namespace corvo::shared {

using telemetry::common::Error;

Error ResultBuilder::Reserve(std::size_t bytes) {
  bytes_ += bytes;
  return bytes_ > kMaxBytes ? Failure(ResultCode::kTooBig, "results above " + std::to_string(kMaxBytes) + " bytes")
                            : Error();
}

Error ResultBuilder::AddText(sqlite3_stmt* statement, int column, Column& value) {
  const void* text = sqlite3_column_text(statement, column);
  if (text == nullptr) {
    // NULL reads as the empty text; the conversion to text can also run out of memory.
    sqlite3* handle = sqlite3_db_handle(statement);
    return sqlite3_errcode(handle) == SQLITE_NOMEM ? Failure(handle) : Error();
  }
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column)) + 1;
  if (Error error = Reserve(size); error.Failed()) {
    return error;
  }
  auto* copy = static_cast<char*>(buffer_->allocate(size, 1));
  std::memcpy(copy, text, size);
  value = Column(copy);
  return {};
}

Error ResultBuilder::Add(sqlite3_stmt* statement) {
  const int count = sqlite3_column_count(statement);
  const std::size_t columns_size = static_cast<std::size_t>(count) * sizeof(Column);
  if (Error error = Reserve(columns_size + sizeof(RowList::value_type)); error.Failed()) {
    return error;
  }
  auto* columns = static_cast<Column*>(buffer_->allocate(columns_size, alignof(Column)));
  std::uninitialized_default_construct_n(columns, count);
  for (int column = 0; column < count; ++column) {
    if (Error error = AddText(statement, column, columns[column]); error.Failed()) {
      return error;
    }
  }
  rows_->emplace_back(std::shared_ptr<Column[]>(buffer_, columns), columns, count);
  return {};
}

Rows ResultBuilder::Take() {
  const auto count = static_cast<std::int32_t>(rows_->size());
  auto* first = rows_->data();
  return {std::shared_ptr<DynamicArray<Column>[]>(std::exchange(rows_, nullptr), first), first, count};
}

}  // namespace corvo::shared
