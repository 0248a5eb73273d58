#pragma once

#include <cstdint>

namespace corvo::telemetry::cleanup {

/// Calendar time in whole seconds since 1970 in UTC. The one clock of the engine: tests link their own.
[[nodiscard]] std::int64_t CurrentTime();

}  // namespace corvo::telemetry::cleanup
