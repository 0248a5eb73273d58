#pragma once

namespace corvo::test {

/// Lets one allocation of this thread by the ordinary global allocator fail while the object lives. Programs that use
/// it replace operator new: link corvo-test-allocations.
class AllocationFailure {
 public:
  /// @param index the allocation that fails, counted from 0.
  explicit AllocationFailure(int index);
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;
  ~AllocationFailure();

  /// Whether that allocation was reached.
  [[nodiscard]] static bool Happened();
};

}  // namespace corvo::test
