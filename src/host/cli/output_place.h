#pragma once

#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

// Where the program may write what the user names: to a name that nothing has or that an ordinary file has, but neither
// a link, nor a database, nor in the data directory a name that belongs to a database or to this program. Each gives
// the path, absolute, and throws a CommandFailure (`kUsage`) that says what stands against it.

/// For the file of --html, which a new one will replace.
[[nodiscard]] std::filesystem::path RequirePagePlace(const std::string& file,
                                                     const std::filesystem::path& data_directory);

/// For the file of --log-file, which is added to, and whose former parts take names of their own. A terminal and the
/// null device are places, too.
[[nodiscard]] std::filesystem::path RequireLogPlace(const std::string& file,
                                                    const std::filesystem::path& data_directory);

}  // namespace corvo::telemetry::host
