#pragma once

#include <type_traits>

#include "storage/storage_options.h"

namespace corvo::test {

/// The storage's options with one field changed.
template <class Value>
shared::StorageOptions With(Value shared::StorageOptions::*field, const std::type_identity_t<Value>& value) {
  shared::StorageOptions options = shared::GetStorageOptions();
  options.*field = value;
  return options;
}

/// One option of the storage for as long as the object lives.
class OptionScope : public shared::StorageOptionsScope {
 public:
  template <class Value>
  OptionScope(Value shared::StorageOptions::*field, const std::type_identity_t<Value>& value)
      : shared::StorageOptionsScope(With(field, value)) {}
};

}  // namespace corvo::test
