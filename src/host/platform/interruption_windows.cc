#include <windows.h>

#include <atomic>
#include <semaphore>
#include <thread>
#include <utility>

#include "host/platform/interruption.h"

namespace corvo::telemetry::host {
namespace {

// As elsewhere, so that exit codes are alike.
constexpr int kInterrupt = 2;
constexpr int kTerminate = 15;
constexpr int kExitCodeOfSignals = 128;

std::atomic<bool> in_scope = false;
std::atomic<int> first_request = 0;
// Never destroyed, as a handler may be late.
std::counting_semaphore<>& wake = *new std::counting_semaphore<>(0);

// Runs on a thread that the system makes for each event.
BOOL WINAPI OnEvent(DWORD event) {
  if (!in_scope) {
    return FALSE;
  }
  const int request = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? kInterrupt : kTerminate;
  int none = 0;
  if (!first_request.compare_exchange_strong(none, request)) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(kExitCodeOfSignals + request));
  }
  wake.release();
  if (request == kTerminate) {
    Sleep(INFINITE);  // The system ends the process when the answer comes; until then it leaves it some seconds.
  }
  return TRUE;
}

// Once and for good: the system may hold, while a handler runs, the lock that taking a handler away needs.
void RegisterHandler() { [[maybe_unused]] static const BOOL registered = SetConsoleCtrlHandler(OnEvent, TRUE); }

}  // namespace

class InterruptionScope::Caller {
 public:
  explicit Caller(std::function<void(int)> on_first) : on_first_(std::move(on_first)), thread_([this] { Call(); }) {
    in_scope = true;
    RegisterHandler();
  }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() {
    in_scope = false;
    ending_ = true;
    wake.release();
    thread_.join();
  }

 private:
  // Woken for nothing by what a former scope left.
  void Call() {
    while (Signal() == 0 && !ending_) {
      wake.acquire();
    }
    if (Signal() != 0) {
      on_first_(Signal());
    }
  }

  std::function<void(int)> on_first_;
  std::atomic<bool> ending_ = false;
  std::thread thread_;  // The last to be made: it uses the others.
};

InterruptionScope::InterruptionScope(std::function<void(int)> on_first) {
  first_request = 0;
  caller_ = std::make_unique<Caller>(std::move(on_first));
}

InterruptionScope::~InterruptionScope() = default;

int InterruptionScope::Signal() noexcept { return first_request; }

}  // namespace corvo::telemetry::host
