#pragma once

#include <memory>

#include "common/error.h"
#include "storage/sql_command.h"
#include "storage/storage_export.h"

namespace google::protobuf {
class Message;
}

namespace corvo::shared {

/// One telemetry database.
///
/// Construction tries whether the file can be opened (`GetLastError` tells); it is opened for good for the first
/// statement, for reading and writing unless `StorageOptions::read_only` says otherwise, and never created. It is
/// untrusted input, see `StorageOptions`: nothing is written to a damaged file, and anything but a regular file is
/// refused. Objects are independent of each other; use each from one thread at a time. The destructor closes the
/// database and deletes the commands that were executed on it.
class CORVO_STORAGE_API TelemetryStorage {
 public:
  /// The database that the contract's `persistance` option names, in the data directory.
  ///
  /// @param contract a message whose type carries the option; a type without it, or null, cannot be resolved.
  /// @param text reserved, changes nothing.
  TelemetryStorage(const google::protobuf::Message* contract, const char* text);

  /// A database by its file name, in the data directory, or by a path with a directory part, as it stands.
  ///
  /// @param database file name or path, in the platform's narrow encoding.
  /// @param text reserved, changes nothing.
  TelemetryStorage(const char* database, const char* text);

  TelemetryStorage(const TelemetryStorage&) = delete;
  TelemetryStorage& operator=(const TelemetryStorage&) = delete;
  ~TelemetryStorage();

  /// Why the database could not be resolved or opened, or how the last `Execute` went; success otherwise.
  [[nodiscard]] corvo::telemetry::common::Error GetLastError() const;

  /// File name with its extension, for example HealthLog.db; empty when it could not be resolved. Owned by the storage.
  /// The spelling "DataBase" of these two is frozen: compiled hosts call them by it.
  [[nodiscard]] const char* GetDataBaseName() const;

  /// Full path of the file, whether it exists or not; empty when it could not be resolved. Owned by the storage.
  [[nodiscard]] const char* GetDataBasePath() const;

  /// Runs one command and takes ownership of it, whatever the outcome.
  ///
  /// @param flag reserved, changes nothing.
  /// @return success, or a record of category `EC_Custom` whose code is SQLite's extended result code
  ///   (https://www.sqlite.org/rescode.html) and whose `what` begins with SQLite's own message (but for a table that
  ///   only the schema names and that does not exist, as a missing table would read the same); an exception inside
  ///   becomes a record as `MakeErrorFromException` makes it.
  corvo::telemetry::common::Error Execute(ICommand* command, const bool& flag);

  /// Runs `count` commands in list order, each as a transaction of its own, up to the first failure, which is returned.
  /// Takes ownership of all of them, run or not; the list itself stays the caller's.
  corvo::telemetry::common::Error Execute(ICommand** commands, const int& count, const bool& flag);

  /// Copies the database as it stands, page by page, to a new file: what others write meanwhile is in it as a whole or
  /// not at all (https://www.sqlite.org/backup.html). Waits for locks as statements do, and ends with them when they
  /// are interrupted. The copy is not forced to the disk. Damage is copied as well.
  ///
  /// @param file path of the copy, in UTF-8; where no file is yet, in a directory that nobody else may write.
  /// @return success, or a failure as of a statement; then there may be a part of the copy.
  corvo::telemetry::common::Error CopyTo(const char* file);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Ends the statements of the process that run now, waiting for a lock included, and each later one as it begins, until
/// `AllowStatements`: they are rolled back, and their result is `IsInterrupted`. A single step of SQLite that began in
/// the same moment runs to its end first.
///
/// For a host that is asked to stop. From any thread; not from a signal handler.
CORVO_STORAGE_API void InterruptStatements() noexcept;

/// Lets statements run again.
CORVO_STORAGE_API void AllowStatements() noexcept;

/// Whether statements are to end.
[[nodiscard]] CORVO_STORAGE_API bool StatementsInterrupted() noexcept;

}  // namespace corvo::shared
