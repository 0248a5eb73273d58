#pragma once

#include <cstdint>

namespace corvo::telemetry::cleanup {

/// Calendar time in whole seconds since 1970 in UTC.
///
/// The one clock of the engine, and alone in its source: tests link a source of their own in its place.
[[nodiscard]] std::int64_t CurrentTime();

}  // namespace corvo::telemetry::cleanup
