#include <windows.h>

#include "support/process_memory.h"

namespace corvo::test {

// The memory that is committed to this process: what of it is in RAM is the system's choice.
std::int64_t ResidentBytes() {
  std::int64_t bytes = 0;
  MEMORY_BASIC_INFORMATION region{};
  const char* address = nullptr;
  while (VirtualQuery(address, &region, sizeof region) != 0) {
    bytes += region.State == MEM_COMMIT ? static_cast<std::int64_t>(region.RegionSize) : 0;
    address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
  }
  return bytes;
}

}  // namespace corvo::test
