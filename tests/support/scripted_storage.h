#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/error.h"

namespace corvo::test {

/// A storage library without databases, for answers that SQLite cannot be made to give. It implements the storage
/// interface and must not be linked together with the real one.
///
/// What every storage of the process answers while the object lives; without one, using a storage fails the program.
/// The functions may throw: then the storage does.
class ScriptedStorage {
 public:
  using Error = telemetry::common::Error;
  using Rows = std::vector<std::vector<std::string>>;

  ScriptedStorage();
  ScriptedStorage(const ScriptedStorage&) = delete;
  ScriptedStorage& operator=(const ScriptedStorage&) = delete;
  ~ScriptedStorage();

  /// Called by the constructors, with "contract <type>" or "file <name>".
  std::function<void(const std::string& database)> open = [](const std::string&) {};
  /// How a statement ends.
  std::function<Error(const std::string& sql)> execute = [](const std::string&) { return Error(); };
  /// The rows of a statement that succeeded.
  std::function<Rows(const std::string& sql)> rows = [](const std::string&) { return Rows(); };
  std::function<Error()> last_error = [] { return Error(); };
  std::function<std::string()> name = [] { return "Log.db"; };
  std::function<std::string()> path = [] { return "/data/Log.db"; };

  std::vector<std::string> opened;      ///< what was opened, in order
  std::vector<std::string> statements;  ///< what was executed, in order
  std::vector<std::string> forms;       ///< how: "single" or "list of <count>", with a true flag " flagged"
  int open_storages = 0;                ///< storages that are not destroyed yet
  int live_commands = 0;                ///< commands that are not deleted yet
};

}  // namespace corvo::test
