#pragma once

#include <cstdint>

namespace corvo::test {

/// Sets the engine's clock while the object lives. Without one, the clock stands at 2024-05-02T00:00:00 UTC.
class FakeClock {
 public:
  /// @param now seconds since 1970 in UTC.
  explicit FakeClock(std::int64_t now);
  FakeClock(const FakeClock&) = delete;
  FakeClock& operator=(const FakeClock&) = delete;
  ~FakeClock();

  /// 2024-05-02T00:00:00 UTC.
  static constexpr std::int64_t kStart = 1'714'608'000;
};

}  // namespace corvo::test
