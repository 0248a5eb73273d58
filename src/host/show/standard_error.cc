#include "host/show/standard_error.h"

#include <cstdio>

#include "host/show/units.h"

namespace corvo::telemetry::host {

void Tell(const std::string& message) {
  ClearProgress();
  std::fprintf(stderr, "corvo-telemetry-host: %s\n", Printable(message).c_str());
}

}  // namespace corvo::telemetry::host
