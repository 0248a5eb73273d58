#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace corvo::telemetry::host {

struct ColumnPlan {
  std::string name;
  std::string sql_type;
};

using Value = std::variant<std::int64_t, double, std::string>;

/// A lock of somebody else, which goes by.
class DatabaseBusy : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A connection that inserts rows into the tables of a database file. Used from one thread.
class RowWriter {
 public:
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  /// Chooses the table that `Insert` writes to, and the columns that it fills.
  ///
  /// @throws std::runtime_error, as every operation does, with SQLite's message; a `DatabaseBusy` when it is a lock.
  void StartRows(const std::string& table, const std::vector<ColumnPlan>& columns);

  /// @param values one for each of the columns.
  void Insert(const std::vector<Value>& values);

 protected:
  /// @param file absolute: of a relative name, SQLite may take the beginning "file:" for that of a URI.
  /// @param flags those of sqlite3_open_v2.
  RowWriter(const std::filesystem::path& file, int flags);
  ~RowWriter();

  void Run(const std::string& sql);
  [[nodiscard]] int Prepare(const std::string& table, const std::vector<ColumnPlan>& columns);
  void Check(int code, const std::string& doing);
  void EndRows();
  [[nodiscard]] sqlite3* Handle() const { return database_; }

 private:
  void Bind(int index, const Value& value);

  std::filesystem::path file_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
};

/// Writes one new database file, in one transaction.
class DatabaseWriter : public RowWriter {
 public:
  explicit DatabaseWriter(const std::filesystem::path& file);

  void CreateTable(const std::string& table, const std::vector<ColumnPlan>& columns);
  void Commit();
};

/// Adds rows to a database that others read, write and clean at the same time, as a collector does. The file must be
/// there; its schema and its journal mode stay.
class DatabaseAppender : public RowWriter {
 public:
  /// Waits for locks no longer than a moment.
  explicit DatabaseAppender(const std::filesystem::path& file);

  /// Begins a transaction; `Commit` ends it. Between them nobody else writes.
  void Begin();
  void Commit();

  /// Undoes what was begun, if anything was.
  void Rollback() noexcept;

  /// Whether there is such a table with such columns.
  [[nodiscard]] bool HasTable(const std::string& table, const std::vector<ColumnPlan>& columns);

  /// Whether the file that it was opened from is still the one of that name. Where open files cannot be moved it is.
  [[nodiscard]] bool IsInPlace() const;
};

}  // namespace corvo::telemetry::host
