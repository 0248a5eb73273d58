#pragma once

#include <chrono>
#include <memory>

#include "storage/statement_observer.h"

struct sqlite3;

namespace corvo::shared {

// What happens to a statement while it runs: its time limit or a host that is asked to stop end it, and an observer is
// told of it.

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

/// Tells the observer of a statement from time to time that it still runs.
class Heartbeat {
 public:
  /// @param started the statement as it was shown at its start; what it refers to lives longer than this.
  Heartbeat(StatementObserver& observer, const StatementRecord& started) noexcept;

  /// Called very often: tells the observer when it is time to.
  void Tick() noexcept;

 private:
  StatementObserver& observer_;
  StatementRecord statement_;
  std::chrono::steady_clock::time_point next_;
};

/// Makes what runs on a connection end with `InterruptStatements` for as long as the object lives.
class Interruptible {
 public:
  /// @param heartbeat of the statement; null: nobody is told.
  Interruptible(sqlite3* handle, Heartbeat* heartbeat) noexcept;
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
