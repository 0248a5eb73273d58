#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace corvo::telemetry::host {

/// The directory of the running program's file, symbolic links resolved.
[[nodiscard]] std::filesystem::path ProgramDirectory();

/// Makes the standard streams carry UTF-8 and lines that end with a single line feed.
void PrepareStandardStreams();

/// Whether a person watches the stream.
[[nodiscard]] bool IsTerminal(std::FILE* stream);

/// Whether output to the stream may be coloured: a terminal that can, and the environment variable NO_COLOR not set.
[[nodiscard]] bool UsesColour(std::FILE* stream);

/// One line on the named locale that a pass needs and this machine lacks, with the command that installs it; empty when
/// nothing is missing.
[[nodiscard]] std::string MissingLocaleHint();

}  // namespace corvo::telemetry::host
