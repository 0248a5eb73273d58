#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "common/commons_export.h"

namespace corvo::telemetry::common {

// Texts cross three borders: file names come in the platform's encoding, SQLite and JSON take UTF-8, and a database
// file may hold any bytes. All functions are free of state and may be called from any thread.

/// The path as UTF-8 text, whatever the platform's narrow encoding is: as SQLite, JSON and people take it. On POSIX the
/// bytes of the name as they are, which need not be valid UTF-8.
[[nodiscard]] CORVO_COMMONS_API std::string Utf8(const std::filesystem::path& path);

/// The path that a UTF-8 text names: the inverse of the above.
[[nodiscard]] CORVO_COMMONS_API std::filesystem::path PathFromUtf8(std::string_view text);

/// The text with every invalid byte sequence replaced by U+FFFD, so that it can be written as JSON.
[[nodiscard]] CORVO_COMMONS_API std::string ValidUtf8(std::string_view text);

}  // namespace corvo::telemetry::common
