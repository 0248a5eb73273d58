#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/error.h"
#include "storage/column.h"
#include "storage/database_path.h"
#include "storage/dynamic_array.h"

struct sqlite3;

namespace corvo::shared {

using Results = DynamicArray<DynamicArray<Column>>;
using Parameters = std::vector<std::optional<std::string>>;  ///< texts of ?1, ?2 …; none is NULL

/// One SQLite connection, or the reason why there is none.
class Connection {
 public:
  /// Opens the file that `database` leads to. Takes no lock.
  explicit Connection(const DatabasePath& database);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  /// Why there is no open database, or success.
  [[nodiscard]] const telemetry::common::Error& OpenError() const { return open_error_; }

  /// Runs one statement in the sight of the registered observer. `results` gets its rows, none on failure.
  telemetry::common::Error Run(const char* sql, const Parameters& parameters, Results& results) noexcept;

 private:
  [[nodiscard]] telemetry::common::Error Open();
  telemetry::common::Error RunUnseen(const char* sql, const Parameters& parameters, Results& results) noexcept;
  telemetry::common::Error RunChecked(const char* sql, const Parameters& parameters, Results& results);
  telemetry::common::Error CheckSchemaOnce();
  [[nodiscard]] std::int64_t TotalChanges() const;
  [[nodiscard]] static int IsOverdue(void* connection);

  std::string path_;
  sqlite3* handle_ = nullptr;
  telemetry::common::Error open_error_;
  bool schema_checked_ = false;
  bool compaction_guard_;
  std::chrono::milliseconds time_limit_;
  std::chrono::steady_clock::time_point started_;
};

}  // namespace corvo::shared
