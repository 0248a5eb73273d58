#include "system/kill.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "system/comparison.h"
#include "system/pass.h"

namespace corvo::test {

using std::chrono::steady_clock;

unsigned Seed() {
  const char* text = std::getenv("CORVO_TEST_SEED");
  return text != nullptr ? static_cast<unsigned>(std::stoul(text)) : std::random_device()();
}

Microseconds PassDuration(const std::filesystem::path& fixture, const std::filesystem::path& work) {
  Microseconds shortest = Microseconds::max();
  for (int pass = 0; pass < 3; ++pass) {
    CopyDatabases(fixture, work);
    PassRunner runner(work);
    runner.Start();
    const auto start = steady_clock::now();
    if (!Succeeded(runner.Result())) {
      throw std::runtime_error("a pass without disturbance failed");
    }
    shortest = std::min(shortest, std::chrono::duration_cast<Microseconds>(steady_clock::now() - start));
  }
  return shortest;
}

bool KillPass(const std::filesystem::path& work, Microseconds moment) {
  PassRunner runner(work);
  runner.Start();
  std::this_thread::sleep_for(moment);
  runner.Process().Kill();
  const bool inside = runner.Result().is_null();
  runner.Process().Wait();
  return inside;
}

}  // namespace corvo::test
