#include "storage/deadline.h"

#include <sqlite3.h>

#include <algorithm>

namespace corvo::shared {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

Deadline::Deadline(sqlite3* handle, milliseconds limit) : handle_(handle) {
  // The clock's range is limited too.
  constexpr milliseconds kLongest = std::chrono::hours(24 * 365);
  if (limit.count() > 0) {
    watcher_ = std::thread([this, end = steady_clock::now() + std::min(limit, kLongest)] { Watch(end); });
  }
}

Deadline::~Deadline() {
  if (watcher_.joinable()) {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    over_.notify_one();
    watcher_.join();
  }
}

void Deadline::Watch(steady_clock::time_point end) {
  // An interrupt between two steps is lost, so it is repeated until the statement has ended.
  constexpr milliseconds kAgain{5};
  std::unique_lock lock(mutex_);
  while (!over_.wait_until(lock, end, [this] { return done_; })) {
    sqlite3_interrupt(handle_);
    end = steady_clock::now() + kAgain;
  }
}

}  // namespace corvo::shared
