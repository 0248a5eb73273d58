#include "host/show/standard_error.h"

#include <cstdio>

#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kLineWidth = 79;
bool progress_shown = false;

}  // namespace

void Tell(const std::string& message) {
  ClearProgress();
  std::fprintf(stderr, "corvo-telemetry-host: %s\n", Printable(message).c_str());
}

void ShowProgress(std::string line) {
  line.resize(kLineWidth, ' ');
  std::fprintf(stderr, "\r%s", line.c_str());
  std::fflush(stderr);
  progress_shown = true;
}

void ClearProgress() noexcept {
  if (progress_shown) {
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(kLineWidth), "");
    progress_shown = false;
  }
}

}  // namespace corvo::telemetry::host
