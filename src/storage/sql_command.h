#pragma once

#include <memory>
#include <string_view>

#include "common/error.h"
#include "storage/results.h"
#include "storage/storage_export.h"

namespace corvo::shared {

class Connection;
class OwnedCommands;

/// The first operations of `ICommand`, a class of their own for the sake of their order in memory: MSVC lays the
/// overloads of one class out in reverse, other compilers as they stand. The order is binary contract: never move an
/// operation.
class CORVO_STORAGE_API ICommandBase {
 public:
  /// The statement's text, owned by the command.
  [[nodiscard]] virtual const char* GetSqlStatement() const = 0;

  /// All rows read, each with its columns in select-list order. Cheap: the rows are shared, not copied.
  [[nodiscard]] virtual Rows GetResults() const = 0;

  /// Replaces the statement and the texts bound to its parameters ?1 … ?count. When the command already belongs to a
  /// storage it runs at once and `GetLastError` says how it went; otherwise it runs when a storage executes it. The
  /// flag is reserved and changes nothing.
  virtual void Execute(const char* statement, bool flag, const char** parameters, const int& count) = 0;

 protected:
  ICommandBase() = default;
  ~ICommandBase() = default;
};

/// A unit of work that a `TelemetryStorage` executes.
///
/// Create it with `new` and hand it to `TelemetryStorage::Execute`: from then on the storage owns it, keeps it with its
/// results until the storage is destroyed, and deletes it then. Used from one thread at a time. The order of the
/// virtual operations is binary contract: never reorder them.
class CORVO_STORAGE_API ICommand : public ICommandBase {
 public:
  ICommand() = default;
  ICommand(const ICommand&) = delete;
  ICommand& operator=(const ICommand&) = delete;

  using ICommandBase::Execute;

  /// As above, without the flag.
  virtual void Execute(const char* statement, const char** parameters, const int& count) = 0;

  /// Whether `Next` can move on to a further row of the results.
  [[nodiscard]] virtual bool HasNext() const = 0;

  /// Moves on by one row; a failure when there is none left.
  virtual corvo::telemetry::common::Error Next() = 0;

  virtual ~ICommand();

  /// The last failure of this command, or success.
  [[nodiscard]] virtual corvo::telemetry::common::Error GetLastError() const = 0;

 private:
  friend class OwnedCommands;

  // The list of the storage that owns the command is kept in the commands themselves: taking one over needs no memory,
  // so a command is owned before anything can fail.
  bool owned_ = false;
  ICommand* next_owned_ = nullptr;
};

/// The command that runs one SQL statement and keeps its result rows.
class CORVO_STORAGE_API SqlCommand : public ICommand {
 public:
  /// @param statement text of one SQL statement, copied; null reads as the empty text, which is refused when run.
  explicit SqlCommand(const char* statement);

  /// As above, for a text that may hold a zero byte: cut there, a statement could change more than was meant, so it is
  /// refused when run.
  explicit SqlCommand(std::string_view statement);

  [[nodiscard]] const char* GetSqlStatement() const override;
  [[nodiscard]] Rows GetResults() const override;
  void Execute(const char* statement, bool flag, const char** parameters, const int& count) override;
  void Execute(const char* statement, const char** parameters, const int& count) override;
  [[nodiscard]] bool HasNext() const override;
  corvo::telemetry::common::Error Next() override;
  ~SqlCommand() override;
  [[nodiscard]] corvo::telemetry::common::Error GetLastError() const override;

 private:
  friend class TelemetryStorage;

  /// Runs the statement on `connection`, which must outlive the command, and keeps rows and outcome.
  corvo::telemetry::common::Error Run(Connection& connection);

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvo::shared
