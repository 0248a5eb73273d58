#include "host/samples/database_writer.h"

#include <fmt/core.h>
// The storage library never creates a database, so the generator writes its files itself, and only here.
#include <sqlite3.h>

#include <stdexcept>

#include "common/text.h"

namespace corvo::telemetry::host {

DatabaseWriter::DatabaseWriter(const std::filesystem::path& file) : file_(file) {
  try {
    Check(sqlite3_open_v2(common::Utf8(file).c_str(), &database_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr),
          "creating");
    // A file that is lost with the power is simply generated again.
    Run("PRAGMA journal_mode=MEMORY");
    Run("PRAGMA synchronous=OFF");
    Run("BEGIN");
  } catch (...) {
    sqlite3_close(database_);
    throw;
  }
}

DatabaseWriter::~DatabaseWriter() {
  EndRows();
  sqlite3_close(database_);
}

void DatabaseWriter::CreateTable(const std::string& table, const std::vector<ColumnPlan>& columns) {
  std::string list;
  for (const ColumnPlan& column : columns) {
    list += fmt::format("{}\"{}\" {}", list.empty() ? "" : ", ", column.name, column.sql_type);
  }
  Run(fmt::format("CREATE TABLE \"{}\" ({})", table, list));
}

void DatabaseWriter::StartRows(const std::string& table, std::size_t columns) {
  EndRows();
  std::string places = "?";
  for (std::size_t column = 1; column < columns; ++column) {
    places += ",?";
  }
  const std::string sql = fmt::format("INSERT INTO \"{}\" VALUES ({})", table, places);
  Check(sqlite3_prepare_v2(database_, sql.c_str(), -1, &insert_, nullptr), sql);
}

void DatabaseWriter::Insert(const std::vector<Value>& values) {
  for (std::size_t index = 0; index < values.size(); ++index) {
    Bind(static_cast<int>(index + 1), values[index]);
  }
  const int code = sqlite3_step(insert_);
  Check(code == SQLITE_DONE ? SQLITE_OK : code, "inserting");
  Check(sqlite3_reset(insert_), "inserting");
}

void DatabaseWriter::Commit() {
  EndRows();
  Run("COMMIT");
}

void DatabaseWriter::Run(const std::string& sql) {
  Check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), sql);
}

void DatabaseWriter::Check(int code, const std::string& doing) {
  if (code != SQLITE_OK) {
    throw std::runtime_error(
        fmt::format("cannot write {}: {}: {}", common::Utf8(file_), doing, sqlite3_errmsg(database_)));
  }
}

void DatabaseWriter::Bind(int index, const Value& value) {
  if (const auto* number = std::get_if<std::int64_t>(&value)) {
    Check(sqlite3_bind_int64(insert_, index, *number), "binding");
  } else if (const auto* real = std::get_if<double>(&value)) {
    Check(sqlite3_bind_double(insert_, index, *real), "binding");
  } else {
    const auto& text = std::get<std::string>(value);
    // The caller keeps the values until the row is in.
    Check(sqlite3_bind_text(insert_, index, text.data(), static_cast<int>(text.size()), nullptr), "binding");
  }
}

void DatabaseWriter::EndRows() {
  sqlite3_finalize(insert_);
  insert_ = nullptr;
}

}  // namespace corvo::telemetry::host
