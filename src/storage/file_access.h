#pragma once

#include <cstdint>
#include <filesystem>

#include "common/error.h"

namespace corvo::shared {

/// What stands under a name; a symbolic link is not followed.
struct FileState {
  enum class Kind { kMissing, kRegular, kOther };

  [[nodiscard]] bool IsSameFile(const FileState& other) const noexcept {
    return kind == Kind::kRegular && other.kind == kind && volume == other.volume && file == other.file;
  }
  [[nodiscard]] bool IsUnchanged(const FileState& other) const noexcept {
    return IsSameFile(other) && size == other.size && modified == other.modified;
  }

  Kind kind = Kind::kOther;   ///< what cannot be looked at is `kOther`
  std::uint64_t volume = 0;   ///< with `file`, the identity of the file while it exists
  std::uint64_t file = 0;     ///<
  std::uint64_t links = 0;    ///< names of the file
  std::uint64_t size = 0;     ///< bytes
  std::int64_t modified = 0;  ///< last change, in the platform's own ticks
};

/// Looks at a name in UTF-8 without opening the file: opening and closing one here would release the locks that other
/// connections of the process hold on it (https://www.sqlite.org/howtocorrupt.html, "Posix advisory locks canceled").
[[nodiscard]] FileState LookAt(const char* name) noexcept;

/// Looks at what a database path leads to, without opening it, and follows its symbolic links.
///
/// Only a regular file is accepted, and beside it only regular files with one name under the names of SQLite's side
/// files: opening a FIFO or a device can wait for ever, or do more than read, and a second name makes a journal of some
/// other file.
///
/// @param resolved the path without symbolic links; unchanged on failure.
telemetry::common::Error CheckDatabaseFile(const std::filesystem::path& path, std::filesystem::path& resolved);

/// The platform's directory of telemetry databases.
[[nodiscard]] const char* PlatformDataDirectory();

}  // namespace corvo::shared
