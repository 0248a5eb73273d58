#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace corvo::test {

/// Ends the process with a message when the object lives longer than its budget: code that hangs cannot be stopped from
/// inside.
class TimeBudget {
 public:
  TimeBudget(std::chrono::seconds budget, std::string message)
      : watch_([this, budget, message = std::move(message)] { Watch(budget, message); }) {}
  TimeBudget(const TimeBudget&) = delete;
  TimeBudget& operator=(const TimeBudget&) = delete;
  ~TimeBudget() {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    changed_.notify_one();
    watch_.join();
  }

 private:
  void Watch(std::chrono::seconds budget, const std::string& message) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, budget, [this] { return done_; })) {
      std::fprintf(stderr, "%s\n", message.c_str());
      std::_Exit(EXIT_FAILURE);
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool done_ = false;
  std::thread watch_;
};

}  // namespace corvo::test
