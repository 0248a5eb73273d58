#pragma once

#include <cstddef>

#include "framework/telemetry_collector_base.h"

namespace corvo::test {

/// Calls virtual operations by their position, as a host does that was built against the interface's order alone.
///
/// Positions are those of the Itanium C++ ABI, where a destructor takes two: one that destroys and one that also frees.
class VirtualSlots {
 public:
  using Error = telemetry::common::Error;
  using PluginBufferAllocator = shared::plugin::PluginBufferAllocator;

  explicit VirtualSlots(void* object) : object_(object), slots_(*static_cast<void***>(object)) {}

  void Execute(const char* input, char* output) const {
    Slot<void (*)(void*, const char*, char*)>(0)(object_, input, output);
  }
  void DestroyAndFree() const { Slot<void (*)(void*)>(2)(object_); }
  void Execute(const char* input, char*& output, const PluginBufferAllocator& allocator) const {
    using Function = void (*)(void*, const char*, char**, const PluginBufferAllocator*);
    Slot<Function>(3)(object_, input, &output, &allocator);
  }
  [[nodiscard]] Error Finalize(const Error& result) const {
    return Slot<Error (*)(void*, const Error*)>(4)(object_, &result);
  }
  void Configure(const char* input) const { Slot<void (*)(void*, const char*)>(5)(object_, input); }
  [[nodiscard]] Error ReadSource() const { return Slot<Error (*)(void*)>(6)(object_); }

 private:
  template <class Function>
  [[nodiscard]] Function Slot(std::size_t index) const {
    return reinterpret_cast<Function>(slots_[index]);
  }

  void* object_;
  void** slots_;
};

}  // namespace corvo::test
