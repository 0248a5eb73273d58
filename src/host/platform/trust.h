#pragma once

#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

// A privileged program that works in a directory where others may write does what they want: they can put a link in a
// database's place, or another directory in the directory's. These functions tell whether that can be. From any thread.

/// Whether the process has rights over files of other users: root, or an administrator whose rights are in force.
[[nodiscard]] bool IsPrivileged();

/// Looks at the directory, at every folder above it and at every symbolic link on the way, and names the first, from
/// the root on, that somebody else may write or replace.
///
/// POSIX: others than this user and root, by owner and mode (an access list shows there, in the group's bits). A folder
/// above the directory may be open to everybody when it is sticky, as /tmp is; the directory itself may not.
///
/// Windows: by the access lists of the folders where the links on the way lead, and only by what they grant to the
/// groups to which everybody belongs; rights of single users and ownership are not judged. Folders under C:\ProgramData
/// inherit that all users may make files there, unless their installer has changed it.
///
/// @return empty when nobody else may; else a sentence without a full stop: "/srv/data may be written by its group", or
///         what kept the question from being answered.
[[nodiscard]] std::string WhoElseMayWrite(const std::filesystem::path& directory);

}  // namespace corvo::telemetry::host
