#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

constexpr int kNone = -1;
thread_local int allocations_until_failure = kNone;
thread_local bool happened = false;

}  // namespace

AllocationFailure::AllocationFailure(int index) {
  happened = false;
  allocations_until_failure = index;
}

AllocationFailure::~AllocationFailure() { allocations_until_failure = kNone; }

bool AllocationFailure::Happened() { return happened; }

bool AllocationFailure::FailsNow() {
  if (allocations_until_failure == kNone) {
    return false;
  }
  const bool fails = allocations_until_failure == 0;
  happened = happened || fails;
  --allocations_until_failure;
  return fails;
}

}  // namespace corvo::test
