#include "support/allocation_failure.h"

#include <cstdlib>
#include <new>

namespace corvo::test {
namespace {

constexpr int kNone = -1;
thread_local int allocations_until_failure = kNone;
thread_local bool happened = false;

bool FailsNow() {
  if (allocations_until_failure == kNone) {
    return false;
  }
  happened = allocations_until_failure == 0;
  --allocations_until_failure;
  return happened;
}

}  // namespace

AllocationFailure::AllocationFailure(int index) {
  happened = false;
  allocations_until_failure = index;
}

AllocationFailure::~AllocationFailure() { allocations_until_failure = kNone; }

bool AllocationFailure::Happened() { return happened; }

}  // namespace corvo::test

void* operator new(std::size_t size) {
  void* memory = corvo::test::FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
