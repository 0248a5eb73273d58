#pragma once

#include <cstddef>
#include <string>

namespace corvo::telemetry::host {

// What the program was asked for goes to standard output. That it could not be written is no reason to stop the work
// half-way, and none to call it a success: it is remembered for the exit code. Both functions from any thread.

/// Writes the text, in UTF-8, to standard output. What is not written is lost and remembered.
void Print(const std::string& text) noexcept;

/// The columns for texts: those of the terminal, but at least 20, below which nothing can be laid out.
[[nodiscard]] std::size_t OutputWidth();

/// Whether anything written to standard output up to now was lost, on its way or in a buffer. `errno` is then the
/// reason of the first loss.
[[nodiscard]] bool OutputLost() noexcept;

}  // namespace corvo::telemetry::host
