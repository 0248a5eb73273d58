#include <semaphore.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <thread>
#include <utility>

#include "host/platform/interruption.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::array kRequests = {SIGHUP, SIGINT, SIGTERM};

std::atomic<int> first_request = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");

/// Of all that wakes a thread, the one thing that a signal handler may use. Never destroyed: a handler may be late.
struct Semaphore {
  Semaphore() { sem_init(&handle, 0, 0); }
  sem_t handle{};
};
Semaphore wake;

void OnRequest(int request) {
  const int error = errno;
  int none = 0;
  if (first_request.compare_exchange_strong(none, request)) {
    sem_post(&wake.handle);
  } else if (request != SIGHUP) {  // The shell and the system both tell that a terminal is gone: that is one request.
    // Blocked until the return from here. Dying by the signal is what tells the shell 128 more.
    signal(request, SIG_DFL);
    raise(request);
  }
  errno = error;
}

}  // namespace

class InterruptionScope::Caller {
 public:
  explicit Caller(std::function<void(int)> on_first) : on_first_(std::move(on_first)), thread_([this] { Call(); }) {
    struct sigaction handler {};
    handler.sa_handler = OnRequest;
    handler.sa_flags = SA_RESTART;
    for (std::size_t index = 0; index < kRequests.size(); ++index) {
      sigaction(kRequests.at(index), nullptr, &former_.at(index));
      if (former_.at(index).sa_handler != SIG_IGN) {
        sigaction(kRequests.at(index), &handler, nullptr);
      }
    }
  }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() {
    for (std::size_t index = 0; index < kRequests.size(); ++index) {
      sigaction(kRequests.at(index), &former_.at(index), nullptr);
    }
    ending_ = true;
    sem_post(&wake.handle);
    thread_.join();
  }

 private:
  // Woken for nothing by other signals and by what a former scope left.
  void Call() {
    while (Signal() == 0 && !ending_) {
      sem_wait(&wake.handle);
    }
    if (Signal() != 0) {
      on_first_(Signal());
    }
  }

  std::function<void(int)> on_first_;
  std::atomic<bool> ending_ = false;
  std::array<struct sigaction, kRequests.size()> former_{};
  std::thread thread_;  // The last to be made: it uses the others.
};

InterruptionScope::InterruptionScope(std::function<void(int)> on_first) {
  first_request = 0;
  caller_ = std::make_unique<Caller>(std::move(on_first));
}

InterruptionScope::~InterruptionScope() = default;

int InterruptionScope::Signal() noexcept { return first_request; }

}  // namespace corvo::telemetry::host
