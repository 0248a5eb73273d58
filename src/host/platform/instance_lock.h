#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace corvo::telemetry::host {

/// One run at a time for a data directory: two at once would each delete what they counted, and rows would be lost that
/// no rule names. The lock is a file of the directory that exists while a run holds it. It ends with the process that
/// holds it, however that ends: a file that a killed run left behind is taken over. It binds runs of this program
/// alone, neither the module nor collectors look at it, and does not reach across machines that share the directory.
///
/// Movable; released by the destructor, which removes the file. Attempts may be made from any thread, and exclude each
/// other within a process too.
class InstanceLock {
 public:
  /// The file's name in the data directory.
  static constexpr const char* kFileName = ".corvo-telemetry-host.lock";

  /// One attempt, which never waits.
  ///
  /// @param directory exists; may be relative.
  /// @param holder when another run has the lock: who that is, as "process 4711, since 2024-05-01 10:00:00 UTC" or
  ///        "another process" when it has not said so yet. For people. Otherwise as it was.
  /// @return the lock; none when another run has it, or when another user keeps its file to himself.
  /// @throws std::runtime_error naming the file and the reason when there can be no lock: the directory cannot be
  ///         written, or something lies in the file's place that is no lock file (link, directory, pipe). That is left
  ///         as it is.
  [[nodiscard]] static std::optional<InstanceLock> TryTake(const std::filesystem::path& directory, std::string& holder);

  /// Attempts until one succeeds, the time is over or `stop` says so; it is asked about ten times a second. Otherwise
  /// as `TryTake`; `holder` is the one met last.
  [[nodiscard]] static std::optional<InstanceLock> Wait(const std::filesystem::path& directory,
                                                        std::chrono::milliseconds limit,
                                                        const std::function<bool()>& stop, std::string& holder);

  /// Who has the lock, as its file tells, for people; empty when nobody seems to. Locks and changes nothing, so it can
  /// be too late to tell.
  [[nodiscard]] static std::string WhoHolds(const std::filesystem::path& directory);

  InstanceLock(InstanceLock&&) = default;
  InstanceLock& operator=(InstanceLock&&) = default;

 private:
  class File;
  explicit InstanceLock(std::shared_ptr<File> file) : file_(std::move(file)) {}

  std::shared_ptr<File> file_;
};

}  // namespace corvo::telemetry::host
