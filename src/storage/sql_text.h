#pragma once

namespace corvo::shared {

/// The first character of an SQL text that is neither blank nor semicolon nor part of a comment; the text's end when
/// there is none.
[[nodiscard]] const char* SkipBlanks(const char* sql);

/// Whether a statement that SQLite has accepted is a VACUUM.
[[nodiscard]] bool IsVacuum(const char* sql);

}  // namespace corvo::shared
