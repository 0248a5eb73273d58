#pragma once

#include <cstddef>
#include <cstring>

namespace corvo::test {

/// Position of a virtual operation in the table of its class, by the Itanium C++ ABI, where a destructor takes two. The
/// first operation that a derived class adds tells how many its base has.
template <class Operation>
std::size_t SlotOf(Operation operation) {
  std::size_t offset = 0;  // in bytes; some processors mark a virtual operation in its lowest bit
  static_assert(sizeof(operation) >= sizeof(offset));
  std::memcpy(&offset, &operation, sizeof(offset));
  return offset / sizeof(void*);
}

}  // namespace corvo::test
