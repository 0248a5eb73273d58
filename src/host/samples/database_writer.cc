#include "host/samples/database_writer.h"

#include <fmt/core.h>
// The storage library never creates a database and inserts no rows, so the generator writes itself, and only here.
#include <sqlite3.h>

#include <stdexcept>

#include "common/text.h"

namespace corvo::telemetry::host {
namespace {

constexpr int kMomentMs = 100;  // a person who interrupts the program should not have to wait for locks

/// Anybody may have written the file: its schema can neither call functions with side effects nor load anything.
void Distrust(sqlite3* database) {
  sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

// The low byte is the primary code, which extended ones carry as well (https://www.sqlite.org/rescode.html).
bool IsLock(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

}  // namespace

RowWriter::RowWriter(const std::filesystem::path& file, int flags) : file_(file) {
  try {
    Check(sqlite3_open_v2(common::Utf8(file).c_str(), &database_, flags, nullptr), "opening");
  } catch (...) {
    sqlite3_close(database_);
    throw;
  }
}

RowWriter::~RowWriter() {
  EndRows();
  sqlite3_close(database_);
}

void RowWriter::StartRows(const std::string& table, const std::vector<ColumnPlan>& columns) {
  Check(Prepare(table, columns), "inserting into " + table);
}

int RowWriter::Prepare(const std::string& table, const std::vector<ColumnPlan>& columns) {
  EndRows();
  std::string names;
  std::string places;
  for (const ColumnPlan& column : columns) {
    names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", column.name);
    places += places.empty() ? "?" : ",?";
  }
  const std::string sql = fmt::format("INSERT INTO \"{}\" ({}) VALUES ({})", table, names, places);
  return sqlite3_prepare_v2(database_, sql.c_str(), -1, &insert_, nullptr);
}

void RowWriter::Insert(const std::vector<Value>& values) {
  for (std::size_t index = 0; index < values.size(); ++index) {
    Bind(static_cast<int>(index + 1), values[index]);
  }
  const int code = sqlite3_step(insert_);
  Check(code == SQLITE_DONE ? SQLITE_OK : code, "inserting");
  Check(sqlite3_reset(insert_), "inserting");
}

void RowWriter::Run(const std::string& sql) {
  Check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), sql);
}

void RowWriter::Check(int code, const std::string& doing) {
  if (code == SQLITE_OK) {
    return;
  }
  const std::string text =
      fmt::format("cannot write {}: {}: {}", common::Utf8(file_), doing, sqlite3_errmsg(database_));
  if (IsLock(code)) {
    throw DatabaseBusy(text);
  }
  throw std::runtime_error(text);
}

void RowWriter::Bind(int index, const Value& value) {
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

void RowWriter::EndRows() {
  sqlite3_finalize(insert_);
  insert_ = nullptr;
}

DatabaseWriter::DatabaseWriter(const std::filesystem::path& file)
    : RowWriter(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) {
  // A file that is lost with the power is simply generated again.
  Run("PRAGMA journal_mode=MEMORY");
  Run("PRAGMA synchronous=OFF");
  Run("BEGIN");
}

void DatabaseWriter::CreateTable(const std::string& table, const std::vector<ColumnPlan>& columns) {
  std::string list;
  for (const ColumnPlan& column : columns) {
    list += fmt::format("{}\"{}\" {}", list.empty() ? "" : ", ", column.name, column.sql_type);
  }
  Run(fmt::format("CREATE TABLE \"{}\" ({})", table, list));
}

void DatabaseWriter::Commit() {
  EndRows();
  Run("COMMIT");
}

DatabaseAppender::DatabaseAppender(const std::filesystem::path& file) : RowWriter(file, SQLITE_OPEN_READWRITE) {
  sqlite3_busy_timeout(Handle(), kMomentMs);
  Distrust(Handle());
}

void DatabaseAppender::Begin() { Run("BEGIN IMMEDIATE"); }

void DatabaseAppender::Commit() {
  EndRows();
  Run("COMMIT");
}

void DatabaseAppender::Rollback() noexcept {
  EndRows();
  if (sqlite3_get_autocommit(Handle()) == 0) {
    sqlite3_exec(Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

bool DatabaseAppender::HasTable(const std::string& table, const std::vector<ColumnPlan>& columns) {
  const int code = Prepare(table, columns);
  if (code != SQLITE_ERROR) {
    Check(code, "inserting into " + table);
  }
  EndRows();
  return code == SQLITE_OK;
}

bool DatabaseAppender::IsInPlace() const {
  int moved = 0;
  return sqlite3_file_control(Handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) != SQLITE_OK || moved == 0;
}

}  // namespace corvo::telemetry::host
