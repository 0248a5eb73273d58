#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

struct sqlite3;

namespace corvo::shared {

// What ends a statement before it is done: its time limit, and a host that is asked to stop.

/// Ends what runs on a connection when its time is over, from a thread of its own: SQLite's progress callbacks are not
/// called within a single long step, such as a count over a tree of pages that leads back to itself.
class Deadline {
 public:
  /// `limit` counts from now; zero or less is without limit and costs nothing.
  ///
  /// @throws std::system_error when no thread can be started.
  Deadline(sqlite3* handle, std::chrono::milliseconds limit);
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
  ~Deadline();

 private:
  void Watch(std::chrono::steady_clock::time_point end);

  sqlite3* handle_;
  std::mutex mutex_;
  std::condition_variable over_;
  bool done_ = false;
  std::thread watcher_;
};

/// Makes what runs on a connection end with `InterruptStatements` for as long as the object lives.
class Interruptible {
 public:
  explicit Interruptible(sqlite3* handle) noexcept;
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;
  ~Interruptible();

 private:
  void Join() noexcept;

  sqlite3* handle_;
  Interruptible* former_ = nullptr;
  Interruptible* next_ = nullptr;

  friend void InterruptStatements() noexcept;
};

}  // namespace corvo::shared
