#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/facts/rows/table_rows.h"

namespace corvo::telemetry::host {

/// Rows as a table that fits a width: long values are cut, and columns that have no place are named below it. Keeps of
/// each value no more than the width needs.
class RowTable {
 public:
  /// @param width in columns of the terminal; 20 at least counts.
  /// @param unicode whether whoever reads the table can be expected to show "…".
  RowTable(const std::vector<std::string>& columns, int width, bool unicode);

  void Add(const Cells& row);

  [[nodiscard]] std::size_t Rows() const { return lines_.size() - 1; }

  /// The table, and a line on what is left out.
  ///
  /// @param colour whether the head is written as a terminal shows it.
  [[nodiscard]] std::string Text(bool colour) const;

 private:
  struct Column {
    std::size_t width = 0;  ///< of its widest value, as it is kept
    bool numbers = true;    ///< and nothing else, beside NULL
  };

  [[nodiscard]] std::vector<std::size_t> Widths() const;
  [[nodiscard]] std::string Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const;
  [[nodiscard]] std::string LeftOut(std::size_t shown) const;

  std::size_t width_;
  std::string cut_;  ///< what stands for the rest of a value
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> lines_;  ///< the head first
};

/// How many columns of a terminal a printable text takes.
[[nodiscard]] std::size_t DisplayWidth(const std::string& text);

/// The text, or the beginning of it with `cut` behind it, in no more than `width` columns of a terminal, which are at
/// least as many as `cut` takes.
[[nodiscard]] std::string CutToWidth(const std::string& text, std::size_t width, const std::string& cut);

}  // namespace corvo::telemetry::host
