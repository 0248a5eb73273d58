#include <cstdlib>
#include <new>

#include "support/allocation_failure.h"

void* operator new(std::size_t size) {
  void* memory = corvo::test::AllocationFailure::FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
