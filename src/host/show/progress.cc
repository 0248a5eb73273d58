#include "host/show/progress.h"

#include <fmt/core.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "host/platform/platform.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Clock::duration kTick = std::chrono::milliseconds(250);
constexpr int kNarrow = 20;

// Every byte but those that continue a character of UTF-8.
bool Begins(char byte) { return (static_cast<unsigned char>(byte) & 0xc0) != 0x80; }

std::size_t Characters(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), Begins));
}

std::string Cut(std::string text, std::size_t characters) {
  const auto is_beyond = [left = characters](char byte) mutable { return Begins(byte) && left-- == 0; };
  text.erase(std::find_if(text.begin(), text.end(), is_beyond), text.end());
  return text;
}

std::string TimeText(std::chrono::seconds elapsed) {
  const auto seconds = elapsed.count();
  return seconds < 3600 ? fmt::format("{}:{:02}", seconds / 60, seconds % 60)
                        : fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

// Not rounded: what is not done does not read as done.
std::string ShareText(double share) {
  return share >= 0 ? fmt::format("{} %", static_cast<int>(std::min(share, 1.0) * 100)) : "";
}

/// The state with the time that its step has taken, where it takes long.
ProgressState WithStepTime(ProgressState state) {
  if (state.since) {
    state.step +=
        fmt::format(", {} s", std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - *state.since).count());
  }
  return state;
}

/// The one line of the process, and the thread that keeps its time going.
class Line {
 public:
  void Show(const ProgressState& state) {
    const std::lock_guard lock(mutex_);
    start_ = start_.value_or(Clock::now());
    state_ = state;
    Draw();
    if (!ticker_.joinable()) {
      ticker_ = std::jthread([this](const std::stop_token& stop) { Tick(stop); });
    }
  }

  void Clear() {
    const std::lock_guard lock(mutex_);
    Erase();
    next_draw_ = Clock::now() + kTick;
  }

  void End() {
    std::jthread ended;  // Joined when the lock is open again, which it needs to end.
    const std::lock_guard lock(mutex_);
    ended.swap(ticker_);
    state_.reset();
    Erase();
  }

 private:
  void Tick(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
      if (Clock::now() >= next_draw_) {
        Draw();
      }
      const Clock::time_point wake = next_draw_;
      ended_.wait_until(lock, stop, wake, [] { return false; });
    }
  }

  // Spaces up to the last column but one erase what was longer. Sequences that erase are not for every terminal. The
  // cursor goes back, so that a "^C", which the terminal writes itself, stands in the line and not in one more.
  void Draw() noexcept {
    next_draw_ = Clock::now() + kTick;
    if (!state_ || !start_) {
      return;
    }
    try {
      const int width = TerminalWidth(stderr);
      const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - *start_);
      const std::string line = ProgressLine(WithStepTime(*state_), elapsed, width);
      const auto rest = static_cast<std::size_t>(width - 1) - Characters(line);
      std::fputs(("\r" + line + std::string(rest, ' ') + "\r").c_str(), stderr);
      std::fflush(stderr);
      drawn_ = true;
    } catch (...) {
      // A courtesy that has no memory now: the next one may.
    }
  }

  void Erase() noexcept {
    if (drawn_) {
      std::fprintf(stderr, "\r%*s\r", TerminalWidth(stderr) - 1, "");
      std::fflush(stderr);
      drawn_ = false;
    }
  }

  std::mutex mutex_;
  std::condition_variable_any ended_;
  std::optional<Clock::time_point> start_;
  std::optional<ProgressState> state_;
  Clock::time_point next_draw_;
  bool drawn_ = false;
  std::jthread ticker_;  // The last to be made: it uses the others.
};

Line& TheLine() {
  static Line line;
  return line;
}

}  // namespace

void ShowProgress(const ProgressState& state) {
  if (IsTerminal(stderr)) {
    TheLine().Show(state);
  }
}

void ShowStep(const std::string& database, const char* step) noexcept {
  try {
    ShowProgress({.database = database, .step = step});
  } catch (...) {
    EndProgress();
  }
}

void ClearProgress() noexcept { TheLine().Clear(); }

void EndProgress() noexcept { TheLine().End(); }

std::string ProgressLine(const ProgressState& state, std::chrono::seconds elapsed, int width) {
  const auto room = static_cast<std::size_t>(std::max(width - 1, 0));
  const std::string share = ShareText(state.share_done);
  if (width < kNarrow) {
    return Cut(share.empty() ? TimeText(elapsed) : share, room);
  }
  const std::string end = "  " + TimeText(elapsed) + (share.empty() ? "" : "  " + share);
  const std::string what = Printable(state.database) + ": " + Printable(state.step);
  return Cut(what, room - std::min(room, end.size())) + end;
}

}  // namespace corvo::telemetry::host
