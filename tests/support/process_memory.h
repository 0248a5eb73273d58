#pragma once

#include <cstdint>

namespace corvo::test {

/// Memory of this process that is in RAM now, in bytes.
[[nodiscard]] std::int64_t ResidentBytes();

}  // namespace corvo::test
