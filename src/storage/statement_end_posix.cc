#include <pthread.h>
#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <list>
#include <mutex>
#include <system_error>

#include "storage/statement_end.h"

namespace corvo::shared {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct Limited {
  sqlite3* handle;
  steady_clock::time_point end;
};

/// The one thread that ends statements. It starts with the first that has a limit and stays until the library goes:
/// starting a thread costs more than many a statement.
class Watcher {
 public:
  using Place = std::list<Limited>::iterator;

  Watcher() = default;
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher();

  [[nodiscard]] Place Add(const Limited& statement);
  void Remove(Place statement) noexcept;

 private:
  static void* Run(void* watcher);
  void Start();
  void Watch();
  [[nodiscard]] steady_clock::time_point InterruptLate();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<Limited> statements_;
  steady_clock::time_point wakes_;
  bool stopping_ = false;
  pid_t process_ = 0;  ///< whose thread it is; a forked process has none
  pthread_t thread_{};
};

Watcher::~Watcher() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  if (process_ == getpid()) {
    changed_.notify_one();
    pthread_join(thread_, nullptr);
  }
}

Watcher::Place Watcher::Add(const Limited& statement) {
  const std::lock_guard lock(mutex_);
  if (process_ != getpid()) {
    Start();
  }
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

// The host's signals are for its own threads.
void Watcher::Start() {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  const int failure = pthread_create(&thread_, nullptr, &Watcher::Run, this);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  if (failure != 0) {
    throw std::system_error(failure, std::generic_category());
  }
  wakes_ = steady_clock::time_point::min();  // It looks by itself first.
  process_ = getpid();
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

Watcher watcher;

}  // namespace

struct Deadline::Watch {
  explicit Watch(const Limited& statement) : place(watcher.Add(statement)) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() { watcher.Remove(place); }

  Watcher::Place place;
};

Deadline::Deadline(sqlite3* handle, milliseconds limit) {
  if (limit.count() > 0) {
    watch_ = std::make_unique<Watch>(Limited{handle, steady_clock::now() + std::min(limit, kLongestLimit)});
  }
}

Deadline::~Deadline() = default;

}  // namespace corvo::shared
