#pragma once

#include <filesystem>

namespace corvo::telemetry::cleanup {

/// Whether the path names an entry of any kind. Symbolic links are followed.
///
/// @throws std::filesystem::filesystem_error naming "exists" when the system cannot say.
[[nodiscard]] bool EntryExists(const std::filesystem::path& path);

}  // namespace corvo::telemetry::cleanup
