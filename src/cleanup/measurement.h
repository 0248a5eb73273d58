#pragma once

#include <cstdint>

namespace corvo::telemetry::cleanup {

/// Decimal megabytes, to the nearest with halves going up, of a page size in bytes times a page number; 0 unless the
/// product, formed in 32 bits, is positive.
[[nodiscard]] std::int32_t Megabytes(std::int32_t page_size, std::int32_t page_number);

}  // namespace corvo::telemetry::cleanup
