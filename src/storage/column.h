#pragma once

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

}  // namespace corvo::shared
