#include <sqlite3.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "storage/connection/statement_end.h"

namespace corvo::shared {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A thread for each statement that has a limit: none may be waited for while a library is unloaded.
struct Deadline::Watch {
  Watch(sqlite3* handle, steady_clock::time_point end) : watcher([this, handle, end] { Run(handle, end); }) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  void Run(sqlite3* handle, steady_clock::time_point end);

  std::mutex mutex;
  std::condition_variable over;
  bool done = false;
  std::thread watcher;  // last, because it uses the others
};

Deadline::Watch::~Watch() {
  {
    const std::lock_guard lock(mutex);
    done = true;
  }
  over.notify_one();
  watcher.join();
}

void Deadline::Watch::Run(sqlite3* handle, steady_clock::time_point end) {
  std::unique_lock lock(mutex);
  while (!over.wait_until(lock, end, [this] { return done; })) {
    sqlite3_interrupt(handle);
    end = steady_clock::now() + kInterruptAgain;
  }
}

Deadline::Deadline(sqlite3* handle, milliseconds limit) {
  if (limit.count() > 0) {
    watch_ = std::make_unique<Watch>(handle, steady_clock::now() + std::min(limit, kLongestLimit));
  }
}

Deadline::~Deadline() = default;

}  // namespace corvo::shared
