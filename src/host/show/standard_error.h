#pragma once

#include <string>

namespace corvo::telemetry::host {

// What the program says on standard error. A stream that takes nothing (closed, a full disk) is no reason to fail: the
// exit code still says how it went. All of it from one thread at a time.

/// Says something to the person at the terminal, in a line that names the program.
void Tell(const std::string& message);

/// Shows a line of progress in place of the former one; what does not fit a narrow terminal is cut.
void ShowProgress(std::string line);

/// Erases the line of progress, before something else is written.
void ClearProgress() noexcept;

}  // namespace corvo::telemetry::host
