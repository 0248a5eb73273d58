#include <unistd.h>

#include <fstream>

#include "support/process_memory.h"

namespace corvo::test {

std::int64_t ResidentBytes() {
  std::int64_t total_pages = 0;
  std::int64_t resident_pages = 0;
  std::ifstream("/proc/self/statm") >> total_pages >> resident_pages;
  return resident_pages * sysconf(_SC_PAGESIZE);
}

}  // namespace corvo::test
