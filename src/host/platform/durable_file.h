#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace corvo::telemetry::host {

// Small files of the program's own in directories where others may write, too, and plant anything under their names.
// Only an ordinary file with one name is such a file, on POSIX one of this user or root. All functions may be called
// from any thread, and throw std::runtime_error that names the file and the reason; what they refuse stays as it is.

/// What the file holds, or its last bytes when it is longer than the program would have made it.
///
/// @param most_bytes that are read.
/// @return none when there is no file.
[[nodiscard]] std::optional<std::string> ReadOwnFile(const std::filesystem::path& file, std::size_t most_bytes);

/// Puts the content in place of what the file holds, in one step that lasts: after a crash at any moment the file is
/// the old one or the new one, and once the function has returned it is the new one. Nobody else may read it (on
/// Windows: who may read the directory's files). One process at a time.
void ReplaceOwnFile(const std::filesystem::path& file, const std::string& content);

/// Adds the text to what the file holds, lastingly: once the function has returned it is there. After a crash a part of
/// it can be; after a failure the file is as it was. Writes nothing else anew. One process at a time.
///
/// @return false, with nothing done, when there is no file that `ReplaceOwnFile` could have made.
[[nodiscard]] bool AppendToOwnFile(const std::filesystem::path& file, const std::string& text);

}  // namespace corvo::telemetry::host
