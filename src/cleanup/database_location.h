#pragma once

#include <google/protobuf/message.h>

#include <string>

namespace corvo::telemetry::cleanup {

/// File name of the database that holds the contract's rows, for example HealthLog.db; "[INVALID FILE]" for null.
[[nodiscard]] std::string GetDatabaseFileName(const google::protobuf::Message* message);

/// Full path of that file, whether it exists or not; "[INVALID PATHNAME]" for null or when it cannot be resolved. Never
/// throws.
[[nodiscard]] std::string GetDatabaseFullPathName(const google::protobuf::Message* message);

/// Whether an entry of any kind exists at the path; symbolic links are followed. A bare file name is looked up in the
/// fixed data directory.
///
/// @throws std::filesystem::filesystem_error when the question cannot be answered.
[[nodiscard]] bool DatabaseFileExists(const char* path);

}  // namespace corvo::telemetry::cleanup
