#pragma once

#include <memory>
#include <vector>

#include "framework/plugin_module.h"

namespace corvo::test {

/// A host's allocator: exact buffers, so that a write behind one shows under a sanitizer, and the sizes asked for.
class BufferAllocator : public shared::plugin::PluginBufferAllocator {
 public:
  [[nodiscard]] char* Allocate(std::size_t size) const override {
    sizes_.push_back(size);
    return buffers_.emplace_back(std::make_unique<char[]>(size)).get();
  }

  /// The sizes so far, in order.
  [[nodiscard]] const std::vector<std::size_t>& Sizes() const { return sizes_; }

  /// The start of the latest buffer; null before the first.
  [[nodiscard]] const char* Latest() const { return buffers_.empty() ? nullptr : buffers_.back().get(); }

 private:
  mutable std::vector<std::size_t> sizes_;
  mutable std::vector<std::unique_ptr<char[]>> buffers_;
};

/// An allocator without memory.
class EmptyAllocator : public shared::plugin::PluginBufferAllocator {
 public:
  [[nodiscard]] char* Allocate(std::size_t /*size*/) const override {
    ++calls;
    return nullptr;
  }

  mutable int calls = 0;
};

}  // namespace corvo::test
