#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace corvo::shared {

/// One value of a result row, as text.
class Column {
 public:
  Column() = default;

  /// `text` must be zero-terminated and outlive the column: results own the texts of their columns.
  explicit Column(const char* text) : text_(text) {}

  /// The value as zero-terminated text; never null: an SQL NULL reads as the empty text.
  [[nodiscard]] const char* GetColumnValue() const { return text_; }

 private:
  const char* text_ = "";
};

/// An array of a fixed number of elements, read in a range-based for, by index, or through `elements` and `count`.
///
/// The elements are kept once and shared between copies, so a copy costs the same whatever the size, and an array
/// stays valid for as long as any copy of it lives. Elements cannot be changed, so copies may be read from several
/// threads. A moved-from array has no elements.
template <class T>
class DynamicArray {
 public:
  /// An array without elements.
  DynamicArray() = default;

  /// An array of `size` value-initialised elements; none when `size` is not positive.
  explicit DynamicArray(int size)
      : count(size > 0 ? size : 0), owner_(std::make_shared<T[]>(static_cast<std::size_t>(count))) {
    elements = owner_.get();
  }

  /// An array over elements that `owner` keeps alive. For the storage library.
  DynamicArray(std::shared_ptr<const T[]> owner, const T* first, std::int32_t size)
      : elements(first), count(size), owner_(std::move(owner)) {}

  DynamicArray(const DynamicArray&) = default;
  DynamicArray(DynamicArray&& other) noexcept { Swap(other); }
  DynamicArray& operator=(const DynamicArray&) = default;
  DynamicArray& operator=(DynamicArray&& other) noexcept {
    DynamicArray taken(std::move(other));
    Swap(taken);
    return *this;
  }
  ~DynamicArray() = default;

  /// The element at `index`, which must be at least 0 and below `count`.
  const T& operator[](int index) const { return elements[index]; }

  [[nodiscard]] std::int32_t size() const { return count; }
  [[nodiscard]] const T* begin() const { return elements; }
  [[nodiscard]] const T* end() const { return elements + count; }

  const T* elements = nullptr;  ///< first element; owned by the array and its copies
  std::int32_t count = 0;       ///< number of elements

 private:
  void Swap(DynamicArray& other) noexcept {
    std::swap(elements, other.elements);
    std::swap(count, other.count);
    owner_.swap(other.owner_);
  }

  std::shared_ptr<const T[]> owner_;
};

/// The rows of a result, each with its columns in select-list order.
using Rows = DynamicArray<DynamicArray<Column>>;

}  // namespace corvo::shared
