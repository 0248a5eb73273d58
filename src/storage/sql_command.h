#pragma once

#include <memory>

#include "storage/command.h"
#include "storage/storage_export.h"

namespace corvo::shared {

class Connection;

/// The command that runs one SQL statement and keeps its result rows.
class CORVO_STORAGE_API SqlCommand : public ICommand {
 public:
  /// @param statement text of one SQL statement, copied; null reads as the empty text, which is refused when run.
  explicit SqlCommand(const char* statement);

  [[nodiscard]] const char* GetSqlStatement() const override;
  [[nodiscard]] DynamicArray<DynamicArray<Column>> GetResults() const override;
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
