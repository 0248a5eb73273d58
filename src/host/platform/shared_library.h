#pragma once

#include <filesystem>

namespace corvo::telemetry::host {

/// A library loaded into the process; unloaded with its owner.
class SharedLibrary {
 public:
  /// Loads the library by its full path, never by search. Its own libraries are found beside it.
  ///
  /// @throws std::runtime_error with the system's reason and the file's name.
  explicit SharedLibrary(const std::filesystem::path& file);
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;
  ~SharedLibrary();

  /// The address of a function that the library exports; null when it exports none of this name.
  [[nodiscard]] void* Find(const char* function) const;

 private:
  void* handle_;
};

}  // namespace corvo::telemetry::host
