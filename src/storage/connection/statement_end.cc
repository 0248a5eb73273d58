#include "storage/connection/statement_end.h"

#include <sqlite3.h>

#include <atomic>
#include <mutex>
#include <utility>

#include "storage/telemetry_storage.h"

namespace corvo::shared {
namespace {

std::atomic<bool> interrupted = false;

// Guards the list of what runs, which needs no memory of its own: the objects lie on the stacks of their threads.
std::mutex mutex;
Interruptible* running = nullptr;

/// Between two looks of SQLite at this, in its own instructions: a fraction of a millisecond.
constexpr int kInstructions = 1000;

/// Between two calls of an observer.
constexpr std::chrono::milliseconds kBeat{200};

int Proceed(void* heartbeat) {
  if (heartbeat != nullptr) {
    static_cast<Heartbeat*>(heartbeat)->Tick();
  }
  return interrupted ? 1 : 0;
}

}  // namespace

void InterruptStatements() noexcept {
  interrupted = true;
  const std::lock_guard lock(mutex);
  for (const Interruptible* each = running; each != nullptr; each = each->next_) {
    sqlite3_interrupt(each->handle_);
  }
}

void AllowStatements() noexcept { interrupted = false; }

bool StatementsInterrupted() noexcept { return interrupted; }

Heartbeat::Heartbeat(StatementObserver& observer, const StatementRecord& started) noexcept
    : observer_(observer), statement_(started), next_(started.start + kBeat) {}

void Heartbeat::Tick() noexcept {
  statement_.end = std::chrono::steady_clock::now();
  if (statement_.end >= next_) {
    observer_.OnProgress(statement_);
    next_ = statement_.end + kBeat;
  }
}

Interruptible::Interruptible(sqlite3* handle, Heartbeat* heartbeat) noexcept : handle_(handle) {
  // SQLite forgets an interrupt that comes between two of its steps; this one it asks for itself.
  sqlite3_progress_handler(handle_, kInstructions, &Proceed, heartbeat);
  Join();
}

void Interruptible::Join() noexcept {
  const std::lock_guard lock(mutex);
  if (running != nullptr) {
    running->former_ = this;
  }
  next_ = std::exchange(running, this);
}

Interruptible::~Interruptible() {
  sqlite3_progress_handler(handle_, 0, nullptr, nullptr);
  const std::lock_guard lock(mutex);
  (former_ != nullptr ? former_->next_ : running) = next_;
  if (next_ != nullptr) {
    next_->former_ = former_;
  }
}

}  // namespace corvo::shared
