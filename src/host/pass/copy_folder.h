#pragma once

#include <filesystem>

#include "host/platform/instance_lock.h"
#include "host/platform/private_directory.h"

namespace corvo::telemetry::host {

/// A folder for the copies of a plan, which nobody else may enter; it goes with the object, and with it the copies. A
/// lock beside them tells that the plan is alive.
class CopyFolder {
 public:
  /// @param place the directory to make it in.
  /// @throws std::runtime_error when it cannot be made.
  explicit CopyFolder(const std::filesystem::path& place);
  CopyFolder(const CopyFolder&) = delete;
  CopyFolder& operator=(const CopyFolder&) = delete;
  ~CopyFolder();

  /// Where the copies are to be. Absolute.
  [[nodiscard]] const std::filesystem::path& Path() const { return copies_; }

 private:
  PrivateDirectory folder_;
  InstanceLock lock_;
  std::filesystem::path copies_;
};

/// Removes what plans that were killed have left in the directory: folders of this user that hold copies and a lock
/// that nobody has. Where others may write, and what cannot be removed, stays.
void RemoveAbandonedCopies(const std::filesystem::path& place);

}  // namespace corvo::telemetry::host
