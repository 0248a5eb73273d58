#pragma once

#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// Writes the page to a new file beside `place` and renames it, so that there is the former page or the new one, and
/// nothing is written through a link.
///
/// @throws CommandFailure (`kPassFailed`) with the reason; then the new file is gone.
void WritePage(const std::filesystem::path& place, const std::string& page);

}  // namespace corvo::telemetry::host
