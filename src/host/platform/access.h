#pragma once

#include <filesystem>

namespace corvo::telemetry::host {

/// Whether this user may read and write the file, as far as its permissions tell; true when that cannot be found out.
[[nodiscard]] bool MayReadAndWrite(const std::filesystem::path& file);

/// Whether this user may make files in the directory, as far as its permissions tell; true when that cannot be found
/// out.
[[nodiscard]] bool MayWriteIn(const std::filesystem::path& directory);

/// Whether the file lies on a file system that takes no writing; false when that cannot be found out.
[[nodiscard]] bool IsOnReadOnlyFileSystem(const std::filesystem::path& file);

/// Whether the process could not open as many files more as a database takes.
[[nodiscard]] bool LacksFileHandles();

}  // namespace corvo::telemetry::host
