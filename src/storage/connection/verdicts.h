#pragma once

#include <string>

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

// What is remembered of files between the statements of a visit, for the whole process: one look through a file serves
// all statements on it for a few minutes, whichever connection they run on. What is remembered is bound to the file's
// identity: a file that was replaced, cut or changed other than by SQLite is looked through anew; other programs'
// ordinary transactions are not. Thread-safe.

/// Whether the open file is sound: what is remembered, or what `FindDamage` says now.
///
/// @param file the file's name, absolute and without symbolic links, in UTF-8.
[[nodiscard]] telemetry::common::Error CheckSoundness(sqlite3* handle, const std::string& file);

/// Takes the file as it stands for what was found sound, after a statement of our own has written to it. A statement
/// that met damage all the same leaves nothing to remember.
void KeepVerdict(sqlite3* handle, const std::string& file, const telemetry::common::Error& result) noexcept;

/// Closes the connection, which can move a write-ahead log into the file, and keeps what is remembered of it.
void CloseKeepingVerdict(sqlite3* handle, const std::string& file) noexcept;

}  // namespace corvo::shared
