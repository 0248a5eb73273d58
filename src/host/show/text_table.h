#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvo::telemetry::host {

enum class Align { kLeft, kRight };
enum class Tone { kPlain, kStrong, kFaint, kWarning };

/// One line of a table. A line without cells is a rule across the whole width.
struct TableLine {
  std::vector<std::string> cells;
  Tone tone = Tone::kPlain;
};

/// Columns that the text takes on a terminal: one for each character of its UTF-8.
[[nodiscard]] std::size_t TextWidth(std::string_view text);

/// Lays the lines out in columns that are as wide as their widest cell, two blanks apart, without blanks at line ends.
///
/// @param alignments one for each column; a line may have fewer cells.
/// @param colour whether tones are written as terminal sequences.
[[nodiscard]] std::string FormatTable(const std::vector<TableLine>& lines, const std::vector<Align>& alignments,
                                      bool colour);

/// The text in the tone, as a terminal sequence when `colour` is set.
[[nodiscard]] std::string InTone(const std::string& text, Tone tone, bool colour);

}  // namespace corvo::telemetry::host
