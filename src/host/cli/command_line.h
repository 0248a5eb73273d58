#pragma once

namespace corvo::telemetry::host {

/// The whole program: reads the command line, runs the command and says on the standard streams how it went.
///
/// @return the exit code, see `ExitCode`.
int RunCommandLine(int argc, char** argv) noexcept;

}  // namespace corvo::telemetry::host
