#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace corvo::telemetry::host {

// One line on the terminal that says what the program is at while something takes long. It shares the terminal with
// everything else that is written there, and leaves nothing behind. All functions may be called from any thread.

/// What is going on; the texts may hold anything.
struct ProgressState {
  std::string database;
  std::string step;
  double share_done = -1;                                           ///< 0 to 1; negative when unknown
  std::optional<std::chrono::steady_clock::time_point> since = {};  ///< when the step began, once it takes long
};

/// Shows the state in place of the former one, with the time since the first call of the process. From then on the line
/// is drawn again about four times a second, as wide as the terminal then is. Does nothing when standard error is no
/// terminal.
///
/// @throws std::bad_alloc, std::system_error when there is no memory or no thread to be had.
void ShowProgress(const ProgressState& state);

/// Shows a step without a share done. Progress is a courtesy: without memory or a thread, work goes on without it.
void ShowStep(const std::string& database, const char* step) noexcept;

/// Erases the line, before something else is written; a moment later it comes back below.
void ClearProgress() noexcept;

/// Erases the line, which stays away until the next `ShowProgress`.
void EndProgress() noexcept;

/// The line itself: less than `width` characters, so that no terminal begins a new one. The name and the step are cut
/// before time and share; below 20 columns there is only the share, or the time when the share is unknown.
///
/// @param width of the terminal, in columns
[[nodiscard]] std::string ProgressLine(const ProgressState& state, std::chrono::seconds elapsed, int width);

}  // namespace corvo::telemetry::host
