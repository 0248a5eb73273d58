#include <pthread.h>
#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>

#include "storage/connection/statement_end.h"

namespace corvo::shared {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct Limited {
  sqlite3* handle;
  steady_clock::time_point end;
};

/// The thread that ends statements. One serves them all, because to start a thread costs more than many a statement.
class Watcher {
 public:
  using Place = std::list<Limited>::iterator;

  /// @throws std::system_error when there is no thread to be had.
  Watcher();
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() { Stop(); }

  /// Whether the thread is one of this process: a forked process has none of its parent's.
  [[nodiscard]] bool IsOurs() const { return process_ == getpid(); }

  [[nodiscard]] Place Add(const Limited& statement);
  void Remove(Place statement) noexcept;
  [[nodiscard]] bool HasStatements();

  /// Ends the thread; limits are no longer kept.
  void Stop() noexcept;

 private:
  static void* Run(void* watcher);
  void Watch();
  [[nodiscard]] steady_clock::time_point InterruptLate();

  const pid_t process_ = getpid();
  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<Limited> statements_;
  steady_clock::time_point wakes_ = steady_clock::time_point::min();  // it looks by itself first
  bool stopping_ = false;
  pthread_t thread_{};
};

// The host's signals are for its own threads.
Watcher::Watcher() {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  const int failure = pthread_create(&thread_, nullptr, &Watcher::Run, this);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  if (failure != 0) {
    throw std::system_error(failure, std::generic_category());
  }
}

void Watcher::Stop() noexcept {
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) {
      return;
    }
    stopping_ = true;
  }
  changed_.notify_one();
  pthread_join(thread_, nullptr);
}

bool Watcher::HasStatements() {
  const std::lock_guard lock(mutex_);
  return !statements_.empty();
}

Watcher::Place Watcher::Add(const Limited& statement) {
  const std::lock_guard lock(mutex_);
  statements_.push_front(statement);
  if (statement.end < wakes_) {
    changed_.notify_one();
  }
  return statements_.begin();
}

// The thread is not told: when it wakes it finds the next that is due.
void Watcher::Remove(Place statement) noexcept {
  const std::lock_guard lock(mutex_);
  statements_.erase(statement);
}

void* Watcher::Run(void* watcher) {
  static_cast<Watcher*>(watcher)->Watch();
  return nullptr;
}

void Watcher::Watch() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    wakes_ = InterruptLate();
    changed_.wait_until(lock, wakes_);
  }
}

/// When the next one is due.
steady_clock::time_point Watcher::InterruptLate() {
  const auto now = steady_clock::now();
  auto next = now + kLongestLimit;
  for (Limited& statement : statements_) {
    if (statement.end <= now) {
      sqlite3_interrupt(statement.handle);
      statement.end = now + kInterruptAgain;
    }
    next = std::min(next, statement.end);
  }
  return next;
}

/// The watcher of the process, from the first statement with a limit until the library goes.
class WatcherOfTheProcess {
 public:
  WatcherOfTheProcess() = default;
  WatcherOfTheProcess(const WatcherOfTheProcess&) = delete;
  WatcherOfTheProcess& operator=(const WatcherOfTheProcess&) = delete;

  // That of a parent stays as it was forked, perhaps in the middle of something: its lock may be taken for good, and
  // its end would wait for a thread that is not there. One with statements is left to the thread that still runs them
  // while the process ends around it.
  ~WatcherOfTheProcess() {
    Watcher* const watcher = watcher_.exchange(nullptr);
    if (watcher != nullptr && watcher->IsOurs()) {
      watcher->Stop();
      if (!watcher->HasStatements()) {
        delete watcher;
      }
    }
  }

  Watcher& Get() {
    Watcher* watcher = watcher_;
    if (watcher == nullptr || !watcher->IsOurs()) {
      auto own = std::make_unique<Watcher>();
      // Another thread may have been faster.
      if (watcher_.compare_exchange_strong(watcher, own.get())) {
        watcher = own.release();
      }
    }
    return *watcher;
  }

 private:
  std::atomic<Watcher*> watcher_ = nullptr;
};

WatcherOfTheProcess watcher_of_the_process;

}  // namespace

struct Deadline::Watch {
  explicit Watch(const Limited& statement) : watcher(watcher_of_the_process.Get()), place(watcher.Add(statement)) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() { watcher.Remove(place); }

  Watcher& watcher;
  Watcher::Place place;
};

Deadline::Deadline(sqlite3* handle, milliseconds limit) {
  if (limit.count() > 0) {
    watch_ = std::make_unique<Watch>(Limited{handle, steady_clock::now() + std::min(limit, kLongestLimit)});
  }
}

Deadline::~Deadline() = default;

}  // namespace corvo::shared
