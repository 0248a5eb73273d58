#include "storage/connection/statement.h"

#include <sqlite3.h>

#include <cstdint>
#include <cstring>
#include <memory_resource>
#include <string_view>
#include <utility>

#include "storage/connection/failure.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

bool StartsWith(const char* text, std::string_view start) {
  return std::strncmp(text, start.data(), start.size()) == 0;
}

// Behind the next `end`, or the text's end: like SQLite, an open comment ends there.
const char* Behind(const char* text, std::string_view end) {
  const char* found = std::strstr(text, end.data());
  return found != nullptr ? found + end.size() : text + std::strlen(text);
}

// The first character that is neither blank nor semicolon nor part of a comment, or the text's end.
const char* SkipBlanks(const char* sql) {
  constexpr std::string_view kBlanks = " \t\n\v\f\r;";
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  while (*sql != '\0') {
    if (kBlanks.find(*sql) != std::string_view::npos) {
      ++sql;
    } else if (StartsWith(sql, "--")) {
      sql = Behind(sql, "\n");
    } else if (StartsWith(sql, "/*")) {
      sql = Behind(sql + 2, "*/");
    } else if (StartsWith(sql, kByteOrderMark)) {
      sql += kByteOrderMark.size();
    } else {
      break;
    }
  }
  return sql;
}

/// The failure of a statement. A table that only a trigger or a view of the file names is qualified by SQLite: what the
/// statement was to change is there and stays as it is, which must not pass for a missing table.
Error FailureOf(sqlite3* handle, std::string_view sql) {
  constexpr std::string_view kSchema = "main.";
  Error error = Failure(handle);
  const std::size_t name = kMissingTableText.size() + 1;
  if (IsMissingTable(error) && error.what.compare(name, kSchema.size(), kSchema) == 0 &&
      sql.find(kSchema) == std::string_view::npos) {
    error.what = "the schema names a table that does not exist: " + error.what.substr(name);
  }
  return error;
}

Error Bind(sqlite3_stmt* statement, const Parameters& parameters) {
  int index = 0;
  for (const std::optional<std::string>& text : parameters) {
    ++index;
    const int code = text
                         ? sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_STATIC, SQLITE_UTF8)
                         : sqlite3_bind_null(statement, index);
    if (code != SQLITE_OK) {
      return Failure(sqlite3_db_handle(statement));
    }
  }
  return {};
}

/// Result rows while a statement runs: all texts and columns in one buffer that the finished rows share.
class ResultBuilder {
 public:
  /// Most bytes of one result, texts and bookkeeping together: a hostile file must not take the process's memory.
  static constexpr std::size_t kMaxBytes = std::size_t{256} * 1024 * 1024;

  /// Adds the row at which the statement stands.
  Error Add(sqlite3_stmt* statement);

  /// Hands the rows over.
  [[nodiscard]] Rows Take();

 private:
  using Buffer = std::pmr::monotonic_buffer_resource;
  using RowList = std::vector<DynamicArray<Column>>;

  [[nodiscard]] Error Reserve(std::size_t bytes);
  Error AddText(sqlite3_stmt* statement, int column, Column& value);

  std::shared_ptr<Buffer> buffer_ = std::make_shared<Buffer>();
  std::shared_ptr<RowList> rows_ = std::make_shared<RowList>();
  std::size_t bytes_ = 0;
};

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

Error Step(sqlite3_stmt* statement, Rows& results) {
  ResultBuilder rows;
  int code = sqlite3_step(statement);
  for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
    if (Error error = rows.Add(statement); error.Failed()) {
      return error;
    }
  }
  if (code != SQLITE_DONE) {
    return FailureOf(sqlite3_db_handle(statement), sqlite3_sql(statement));
  }
  results = rows.Take();
  return {};
}

}  // namespace

void StatementFinalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Error Prepare(sqlite3* handle, const std::string& sql, Statement& statement) {
  if (sql.find('\0') != std::string::npos) {
    return Failure(ResultCode::kMisuse, "the statement holds a zero byte");
  }
  sqlite3_stmt* prepared = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(handle, sql.c_str(), -1, &prepared, &rest);
  statement.reset(prepared);
  if (code != SQLITE_OK) {
    return FailureOf(handle, sql);
  }
  if (prepared == nullptr) {
    return Failure(ResultCode::kMisuse, "no statement");
  }
  return *SkipBlanks(rest) == '\0' ? Error() : Failure(ResultCode::kMisuse, "more than one statement");
}

bool OnlyReads(sqlite3_stmt* statement) { return sqlite3_stmt_readonly(statement) != 0; }

Error Run(sqlite3_stmt* statement, const Parameters& parameters, Rows& results) {
  Error error = Bind(statement, parameters);
  return error.Failed() ? error : Step(statement, results);
}

Error ReadNumber(sqlite3* handle, const std::string& sql, std::int64_t& number) {
  Statement statement;
  if (Error error = Prepare(handle, sql, statement); error.Failed()) {
    return error;
  }
  if (sqlite3_step(statement.get()) != SQLITE_ROW) {
    return Failure(handle);
  }
  number = sqlite3_column_int64(statement.get(), 0);
  return {};
}

}  // namespace corvo::shared
