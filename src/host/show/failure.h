#pragma once

#include <stdexcept>
#include <string>

#include "common/error.h"

namespace corvo::telemetry::host {

/// What the program's exit code says.
enum ExitCode : int {
  kDone = 0,        ///< all was cleaned, or there was nothing to do
  kPassFailed = 1,  ///< something was not cleaned
  kUsage = 2,
  kFindings = 3,  ///< for commands that only look: something was found
  kNoDataDirectory = 10,
  kAnotherRun = 11,  ///< of the same data directory, and --wait was over
  kModuleNotLoadable = 12,
  kHungUp = 129,       ///< the terminal is gone: 128 and the number of the signal, as shells have it
  kInterrupted = 130,  ///< Ctrl-C
  kTerminated = 143,
};

/// The codes, for the end of a help text.
inline constexpr const char* kExitCodes =
    "Exit codes: 0 done, or nothing to do; 1 something was not done; 2 wrong usage;\n"
    "3 something was found; 10 no data directory, or none that can be used;\n"
    "11 another run is at work there; 12 module not loadable;\n"
    "129 / 130 / 143 interrupted.";

/// The exit code of a program that a signal, 1, 2 or 15, has ended early.
[[nodiscard]] constexpr ExitCode InterruptedBy(int signal) {
  return signal == 1 ? kHungUp : signal == 2 ? kInterrupted : kTerminated;
}

/// A command that cannot go on: the text says what happened, where, and what to do.
class CommandFailure : public std::runtime_error {
 public:
  CommandFailure(ExitCode exit_code, const std::string& what) : std::runtime_error(what), exit_code_(exit_code) {}

  [[nodiscard]] ExitCode Code() const { return exit_code_; }

  /// Whether the user ended the command early.
  [[nodiscard]] bool Interrupted() const {
    return exit_code_ == kHungUp || exit_code_ == kInterrupted || exit_code_ == kTerminated;
  }

  /// The failure as a record of category `EC_Custom` whose code is the exit code.
  [[nodiscard]] common::Error Record() const;

 private:
  ExitCode exit_code_;
};

/// Reports a failure: one line on standard error, and with `json` the document of a failure on standard
/// output.
///
/// @param interrupted whether the user ended the command early.
void ReportFailure(const common::Error& error, bool json, bool interrupted = false);

}  // namespace corvo::telemetry::host
