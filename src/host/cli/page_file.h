#pragma once

#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// Finds out whether a page may be written there: to a name that nothing has or that an ordinary file has, but neither
/// a link, nor a database, nor a file in the data directory that belongs to a database or to this program.
///
/// @return the path, absolute.
/// @throws CommandFailure (`kUsage`) that says what stands against it.
[[nodiscard]] std::filesystem::path RequirePagePlace(const std::string& file,
                                                     const std::filesystem::path& data_directory);

/// Writes the page to a new file beside `place` and renames it, so that there is the former page or the new one, and
/// nothing is written through a link.
///
/// @throws CommandFailure (`kPassFailed`) with the reason; then the new file is gone.
void WritePage(const std::filesystem::path& place, const std::string& page);

}  // namespace corvo::telemetry::host
