// The functions of GNU's C library, which gives its own under these names for exactly this. Its operator new calls
// them.
#include <cerrno>
#include <cstddef>

#include "support/allocation_failure.h"

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
  if (corvo::test::AllocationFailure::FailsNow()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
  if (corvo::test::AllocationFailure::FailsNow()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) noexcept {
  if (corvo::test::AllocationFailure::FailsNow()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_realloc(memory, size);
}
}
