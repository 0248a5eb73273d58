#pragma once

#include "common/error.h"
#include "storage/column.h"
#include "storage/dynamic_array.h"
#include "storage/storage_export.h"

namespace corvo::shared {

/// A unit of work that a `TelemetryStorage` executes.
///
/// Create it with `new` and hand it to `TelemetryStorage::Execute`: from then on the storage owns it, keeps it with its
/// results until the storage is destroyed, and deletes it then. Used from one thread at a time. The order of the
/// virtual operations is binary contract: never reorder them.
class CORVO_STORAGE_API ICommand {
 public:
  ICommand() = default;
  ICommand(const ICommand&) = delete;
  ICommand& operator=(const ICommand&) = delete;

  /// The statement's text, owned by the command.
  [[nodiscard]] virtual const char* GetSqlStatement() const = 0;

  /// All rows read, each with its columns in select-list order. Cheap: the rows are shared, not copied.
  [[nodiscard]] virtual DynamicArray<DynamicArray<Column>> GetResults() const = 0;

  /// Replaces the statement and the texts bound to its parameters ?1 … ?count. When the command already belongs to a
  /// storage it runs at once and `GetLastError` says how it went; otherwise it runs when a storage executes it. The
  /// flag is reserved and changes nothing.
  virtual void Execute(const char* statement, bool flag, const char** parameters, const int& count) = 0;
  virtual void Execute(const char* statement, const char** parameters, const int& count) = 0;

  /// Whether `Next` can move on to a further row of the results.
  [[nodiscard]] virtual bool HasNext() const = 0;

  /// Moves on by one row; a failure when there is none left.
  virtual corvo::telemetry::common::Error Next() = 0;

  virtual ~ICommand();

  /// The last failure of this command, or success.
  [[nodiscard]] virtual corvo::telemetry::common::Error GetLastError() const = 0;
};

}  // namespace corvo::shared
