#pragma once

#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "support/environment.h"

namespace corvo::test {

/// The process's time zone while the object lives.
class LocalZone {
 public:
  /// @param zone as in the environment variable TZ, for example "XXX-5:30", which is ahead of UTC.
  explicit LocalZone(const char* zone) {
    if (const char* former = std::getenv("TZ"); former != nullptr) {
      former_ = former;
    }
    Set(zone);
  }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;
  ~LocalZone() { Set(former_ ? former_->c_str() : nullptr); }

 private:
  static void Set(const char* zone) {
    SetEnvironment("TZ", zone);
    tzset();
  }

  std::optional<std::string> former_;
};

}  // namespace corvo::test
