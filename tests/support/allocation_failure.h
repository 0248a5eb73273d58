#pragma once

namespace corvo::test {

/// Lets one allocation of this thread fail while the object lives. Programs that use it replace the allocator: link
/// corvo-test-allocations for the ordinary operator new, corvo-test-all-allocations for the C library's as well, with
/// which SQLite and the C++ library itself allocate.
class AllocationFailure {
 public:
  /// @param index the allocation that fails, counted from 0.
  explicit AllocationFailure(int index);
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;
  ~AllocationFailure();

  /// Whether that allocation was reached.
  [[nodiscard]] static bool Happened();

  /// For the replaced allocators: counts an allocation, and says whether it is the one that fails.
  [[nodiscard]] static bool FailsNow();
};

}  // namespace corvo::test
