#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "system/child_process.h"

namespace corvo::test {

/// The pass runner as a child process, on the databases of one folder.
class PassRunner {
 public:
  explicit PassRunner(const std::filesystem::path& data_directory, const std::vector<std::string>& options = {},
                      const std::vector<std::string>& wrapper = {});

  /// Starts a pass and returns when it is about to begin.
  void Start();

  /// Waits for the end of the pass that was started: its result record; null when the child died before.
  [[nodiscard]] nlohmann::json Result();

  /// A whole pass.
  [[nodiscard]] nlohmann::json Run();

  /// Lets the child end: how often its fault has fired.
  [[nodiscard]] std::int64_t FaultsFired();

  [[nodiscard]] ChildProcess& Process() { return process_; }

 private:
  ChildProcess process_;
};

/// One whole pass in a process of its own: its result record.
[[nodiscard]] nlohmann::json RunPass(const std::filesystem::path& data_directory,
                                     const std::vector<std::string>& options = {});

/// Whether the record means success.
[[nodiscard]] bool Succeeded(const nlohmann::json& record);

}  // namespace corvo::test
