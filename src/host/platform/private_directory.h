#pragma once

#include <filesystem>

namespace corvo::telemetry::host {

/// A directory for temporary files that nobody else may enter; it goes with the object, and with it all that is in it.
class PrivateDirectory {
 public:
  /// What its name begins with.
  static constexpr const char* kPrefix = "corvo-telemetry-";

  /// Makes one of a name that nobody can know beforehand.
  ///
  /// @param place the directory to make it in.
  /// @throws std::system_error when it cannot be made.
  explicit PrivateDirectory(const std::filesystem::path& place);
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;
  ~PrivateDirectory();

  /// Absolute.
  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace corvo::telemetry::host
