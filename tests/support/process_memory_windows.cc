#include <windows.h>

// After the header that it relies on.
#include <psapi.h>

#include "support/process_memory.h"

namespace corvo::test {

// The memory that is committed to this process alone: what is in RAM is the system's choice.
std::int64_t ResidentBytes() {
  PROCESS_MEMORY_COUNTERS_EX counters{};
  counters.cb = sizeof counters;
  K32GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
  return static_cast<std::int64_t>(counters.PrivateUsage);
}

}  // namespace corvo::test
