#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "common/error.h"
#include "storage/connection/database_path.h"
#include "storage/connection/file_access.h"
#include "storage/connection/statement.h"
#include "storage/connection/statement_end.h"
#include "storage/statement_observer.h"
#include "storage/storage_options.h"

namespace corvo::shared {

/// One SQLite connection, or the reason why there is none.
class Connection {
 public:
  /// Sees whether the file that `database` leads to can be opened. Takes no lock. It is opened for the first statement:
  /// who asks for a database's name alone does not need it.
  explicit Connection(const DatabasePath& database);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  /// Why there is no open database, or success.
  [[nodiscard]] const telemetry::common::Error& OpenError() const { return open_error_; }

  /// Whether the options let a database of this file name be opened.
  [[nodiscard]] bool MayOpen(const std::string& name) const;

  /// Runs one statement in the sight of the registered observer. `results` gets its rows, none on failure.
  [[nodiscard]] telemetry::common::Error Run(const std::string& sql, const Parameters& parameters,
                                             Rows& results) noexcept;

  /// Copies the database to a new file, see `TelemetryStorage::CopyTo`. Not in the sight of the observer.
  [[nodiscard]] telemetry::common::Error CopyTo(const std::string& file) noexcept;

 private:
  using Error = telemetry::common::Error;

  template <class Work>
  [[nodiscard]] Error Guarded(const Work& work) noexcept;
  template <class Work>
  [[nodiscard]] Error Once(const Work& work);
  [[nodiscard]] Error Open(const std::string& name);
  [[nodiscard]] Error OpenOnce();
  [[nodiscard]] Error OpenHandle(const std::string& name, int flags);
  [[nodiscard]] Error OpenUnlocked();
  [[nodiscard]] bool HasChangedUnlocked() const;
  [[nodiscard]] Error RunUnseen(const std::string& sql, const Parameters& parameters, Rows& results) noexcept;
  [[nodiscard]] Error RunChecked(const std::string& sql, const Parameters& parameters, Rows& results);
  [[nodiscard]] Error RunWrite(sqlite3_stmt* statement, const Parameters& parameters, Rows& results);
  [[nodiscard]] Error RunRead(sqlite3_stmt* statement, const Parameters& parameters, Rows& results);
  [[nodiscard]] Error PrepareSchemaOnce();
  [[nodiscard]] Error Soundness();
  [[nodiscard]] std::int64_t TotalChanges() const;
  [[nodiscard]] std::int64_t RowsChanged(std::int64_t total_before) const;
  [[nodiscard]] static int NoteChangedTable(void* connection, int action, const char* table, const char* unused,
                                            const char* database, const char* trigger);

  std::string path_;
  StorageOptions options_;
  std::string file_;  ///< what `path_` leads to, in UTF-8
  ConnectionFiles files_;
  sqlite3* handle_ = nullptr;
  Error open_error_;
  bool schema_prepared_ = false;
  std::optional<FileState> unlocked_;     ///< as it was opened to be read without locks
  std::set<std::string> changed_tables_;  ///< that the statement itself names, not its triggers
  std::optional<Heartbeat> heartbeat_;    ///< of the statement that runs, when it is observed
  std::optional<LeftOutCompaction> left_out_;
};

}  // namespace corvo::shared
