#include "host/platform/instance_lock.h"

#include <algorithm>
#include <thread>

namespace corvo::telemetry::host {

// Asking again and again, because a wait of the system's own could neither be limited nor stopped.
std::optional<InstanceLock> InstanceLock::Wait(const std::filesystem::path& directory, std::chrono::milliseconds limit,
                                               const std::function<bool()>& stop, std::string& holder) {
  using Clock = std::chrono::steady_clock;
  constexpr Clock::duration kPause = std::chrono::milliseconds(100);
  const Clock::time_point end = Clock::now() + limit;
  for (;;) {
    std::optional<InstanceLock> lock = TryTake(directory, holder);
    const Clock::duration left = end - Clock::now();
    if (lock || left <= Clock::duration::zero() || stop()) {
      return lock;
    }
    std::this_thread::sleep_for(std::min(kPause, left));
  }
}

}  // namespace corvo::telemetry::host
