#pragma once

#include <chrono>
#include <memory>

struct sqlite3;

namespace corvo::shared {

// What ends a statement before it is done: its time limit, and a host that is asked to stop.

/// Ends what runs on a connection when its time is over, from another thread: SQLite's progress callbacks are not
/// called within a single long step, such as a count over a tree of pages that leads back to itself.
///
/// A platform matter: one thread serves all statements where the library can end it before it is unloaded.
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
  struct Watch;
  std::unique_ptr<Watch> watch_;
};

/// The longest limit that is counted: the clock's range is limited too.
inline constexpr std::chrono::milliseconds kLongestLimit = std::chrono::hours(24 * 365);

/// An interrupt between two steps of SQLite is lost, so it is repeated until the statement has ended.
inline constexpr std::chrono::milliseconds kInterruptAgain{5};

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
