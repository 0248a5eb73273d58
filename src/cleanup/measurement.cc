#include "cleanup/measurement.h"

namespace corvo::telemetry::cleanup {
namespace {

// Deliberately 32 bits wide: products and sums wrap.
std::int32_t WrappingProduct(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

std::int32_t WrappingSum(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace

std::int32_t Megabytes(std::int32_t page_size, std::int32_t page_number) {
  const std::int32_t bytes = WrappingProduct(page_size, page_number);
  return bytes > 0 ? WrappingSum(bytes, 500'000) / 1'000'000 : 0;
}

}  // namespace corvo::telemetry::cleanup
