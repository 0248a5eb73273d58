#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// The directory of the running program's file, symbolic links resolved.
[[nodiscard]] std::filesystem::path ProgramDirectory();

/// The directory in which SQLite puts its temporary files, compaction's among them; empty when it would find none.
/// Follows SQLite's own order (https://www.sqlite.org/tempfiles.html), not that of the standard library.
[[nodiscard]] std::filesystem::path SqliteTemporaryDirectory();

/// Makes the process fit to write databases. Called first of all, while it has one thread:
/// - standard streams that are closed stay useless, but keep their numbers, so that no database gets one of them and
///   with it every message; writing to one fails, as on a full disk;
/// - a reader that went away and a limit on file sizes are errors of the write, not the end of the process;
/// - the streams carry UTF-8 and lines that end with a single line feed.
void PrepareProcess();

/// Whether a person watches the stream.
[[nodiscard]] bool IsTerminal(std::FILE* stream);

/// Opens a file, which is made when it is missing, to add text to its end; follows no link and waits for nobody.
///
/// @return null, with the reason in `errno`, when it cannot be opened, or is neither an ordinary file nor a device.
[[nodiscard]] std::FILE* OpenToAppend(const std::filesystem::path& file);

/// Whether this is a device that text may go to without harm: a terminal, or the one that takes everything and keeps
/// nothing.
[[nodiscard]] bool IsTerminalOrNull(const std::filesystem::path& device);

/// Columns of the terminal now, as a person may have resized it; 80 when it does not tell or the stream is none.
[[nodiscard]] int TerminalWidth(std::FILE* stream);

/// Whether output to the stream may be coloured: a terminal that can, the environment variable NO_COLOR not set, and
/// `NeverUseColour` not called.
[[nodiscard]] bool UsesColour(std::FILE* stream);

/// From now on no stream is coloured.
void NeverUseColour() noexcept;

/// Whether whoever reads the stream can be expected to show more of Unicode than ASCII, such as U+258F or U+2026: by
/// the environment's character set, and a terminal that is no "dumb" one.
[[nodiscard]] bool ShowsBlocks(std::FILE* stream);

/// One line on the named locale that a pass needs and this machine lacks, with the command that installs it; empty when
/// nothing is missing.
[[nodiscard]] std::string MissingLocaleHint();

}  // namespace corvo::telemetry::host
