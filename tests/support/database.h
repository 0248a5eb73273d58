#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct sqlite3;

namespace corvo::test {

using Row = std::vector<std::string>;

/// A real SQLite database that a test creates, fills and reads, on a connection of its own. Every failure of SQLite
/// throws std::runtime_error with its message, so a test that forgets to look at it fails.
class Database {
 public:
  /// Opens the file, and creates it when it is missing.
  explicit Database(const std::filesystem::path& file);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  /// Runs any number of statements.
  void Run(const std::string& sql);

  /// The rows of one query, every value as text ("NULL" for NULL).
  [[nodiscard]] std::vector<Row> Query(const std::string& sql);

  /// The first value of the first row, as a number.
  [[nodiscard]] std::int64_t Number(const std::string& sql);

  /// Number of rows of a table.
  [[nodiscard]] std::int64_t Count(const std::string& table) { return Number("SELECT COUNT(*) FROM " + table); }

  [[nodiscard]] sqlite3* Handle() const { return handle_; }

 private:
  sqlite3* handle_ = nullptr;
};

}  // namespace corvo::test
