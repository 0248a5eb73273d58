#pragma once

#include <cstdint>
#include <filesystem>
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

/// Writes one new database file, in one transaction.
class DatabaseWriter {
 public:
  /// @param file absolute: of a relative name, SQLite may take the beginning "file:" for that of a URI.
  /// @throws std::runtime_error, as every operation does, with SQLite's message.
  explicit DatabaseWriter(const std::filesystem::path& file);
  DatabaseWriter(const DatabaseWriter&) = delete;
  DatabaseWriter& operator=(const DatabaseWriter&) = delete;
  ~DatabaseWriter();

  void CreateTable(const std::string& table, const std::vector<ColumnPlan>& columns);

  /// Chooses the table that `Insert` writes to.
  void StartRows(const std::string& table, std::size_t columns);
  void Insert(const std::vector<Value>& values);

  void Commit();

 private:
  void Run(const std::string& sql);
  void Check(int code, const std::string& doing);
  void Bind(int index, const Value& value);
  void EndRows();

  std::filesystem::path file_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
};

}  // namespace corvo::telemetry::host
