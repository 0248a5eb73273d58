#include "cleanup/clock.h"

#include <chrono>

namespace corvo::telemetry::cleanup {

std::int64_t CurrentTime() {
  using std::chrono::floor, std::chrono::seconds, std::chrono::system_clock;
  return floor<seconds>(system_clock::now()).time_since_epoch().count();
}

}  // namespace corvo::telemetry::cleanup
