#pragma once

#include <cstdio>
#include <filesystem>

namespace corvo::telemetry::host {

/// The directory of the running program's file, symbolic links resolved.
[[nodiscard]] std::filesystem::path ProgramDirectory();

/// Whether a person watches the stream.
[[nodiscard]] bool IsTerminal(std::FILE* stream);

/// Whether output to the stream may be coloured: a terminal that can, and the environment variable NO_COLOR not set.
[[nodiscard]] bool UsesColour(std::FILE* stream);

}  // namespace corvo::telemetry::host
