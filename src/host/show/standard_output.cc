#include "host/show/standard_output.h"

#include <fmt/core.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "host/platform/platform.h"
#include "host/show/progress.h"

namespace corvo::telemetry::host {
namespace {

std::atomic<int> first_failure = 0;

void Remember(int failure) {
  int none = 0;
  first_failure.compare_exchange_strong(none, failure);
}

}  // namespace

// Not by the standard library's own functions: they cut characters in two on a console of Windows.
void Print(const std::string& text) noexcept {
  ClearProgress();
  try {
    fmt::print("{}", text);
  } catch (const std::system_error& failure) {
    Remember(failure.code().value());
  } catch (...) {
    Remember(EIO);
  }
}

std::size_t OutputWidth() { return static_cast<std::size_t>(std::max(TerminalWidth(stdout), 20)); }

bool OutputLost() noexcept {
  errno = 0;
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    Remember(errno != 0 ? errno : EIO);
  }
  errno = first_failure;
  return errno != 0;
}

}  // namespace corvo::telemetry::host
