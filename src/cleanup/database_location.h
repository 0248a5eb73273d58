#pragma once

#include <google/protobuf/message.h>

#include <filesystem>
#include <string>

namespace corvo::telemetry::cleanup {

/// File name of the contract's database, for example HealthLog.db. A database that cannot be opened, a missing one too,
/// is named after the contract's type instead: a file that nobody has. "[INVALID FILE]" for null.
[[nodiscard]] std::string GetDatabaseFileName(const google::protobuf::Message* message);

/// Full path of the file of that name, which need not exist; the name alone when the storage library gives no path.
/// "[INVALID PATHNAME]" for null, and for anything thrown on the way, which is logged; what the log throws leaves here.
[[nodiscard]] std::string GetDatabaseFullPathName(const google::protobuf::Message* message);

/// Whether an entry of any kind exists at the path; symbolic links are followed. A bare file name is looked up in the
/// fixed directory of Windows, not in the one that a host may have set; elsewhere that is no directory, and nothing is
/// found.
///
/// @throws std::filesystem::filesystem_error naming "exists" when the system cannot say.
[[nodiscard]] bool DatabaseFileExists(const char* path);

/// As above, with every path taken as it stands.
[[nodiscard]] bool EntryExists(const std::filesystem::path& path);

}  // namespace corvo::telemetry::cleanup
