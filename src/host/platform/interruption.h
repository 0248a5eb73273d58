#pragma once

#include <functional>
#include <memory>

namespace corvo::telemetry::host {

/// Gives a person who interrupts the program (Ctrl-C), or a system that ends it, an end in order: while the object
/// lives, the first request calls a function and the process goes on, so that it can stop and report. The second ends
/// it at once.
///
/// Requests are SIGINT, SIGTERM and, when the terminal goes away, SIGHUP, of which a second one ends nothing, as more
/// than one can tell of it; on Windows the console's Ctrl-C and Ctrl-Break, told as 2, and closing, logging off
/// and shutting down, told as 15, after which the system leaves only some seconds. A signal that the program was
/// started to ignore, as under nohup, stays ignored.
///
/// One object at a time; its end brings back what was before.
class InterruptionScope {
 public:
  /// @param on_first called at most once, with 1, 2 or 15, on a thread of its own where everything may be done. Must
  /// not
  ///        throw and may run until the scope ends, which waits for it.
  /// @throws std::system_error when no thread can be made; then nothing has changed.
  explicit InterruptionScope(std::function<void(int)> on_first);
  InterruptionScope(const InterruptionScope&) = delete;
  InterruptionScope& operator=(const InterruptionScope&) = delete;
  ~InterruptionScope();

  /// The request that came first since the last scope began, also after its end: 1, 2 or 15; 0 when none came. From
  /// any thread. The shell's exit code for it is 128 more.
  [[nodiscard]] static int Signal() noexcept;

 private:
  class Caller;
  std::unique_ptr<Caller> caller_;
};

}  // namespace corvo::telemetry::host
