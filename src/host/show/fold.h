#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// The text in lines of at most `width` characters, folded at its blanks and line feeds. A word that is longer than a
/// line stays whole. Characters are counted, not bytes.
///
/// @param hang blanks that the lines after the first begin with, within the width.
[[nodiscard]] std::vector<std::string> Folded(const std::string& text, std::size_t width, std::size_t hang = 0);

/// The same, each line behind a margin of blanks and with a line feed at its end.
///
/// @param width in columns, the margin included.
[[nodiscard]] std::string Indented(const std::string& text, std::size_t margin, std::size_t width);

/// Each line of the text folded for itself, with a line feed at its end. One that is narrow enough stays as it is.
[[nodiscard]] std::string FoldedLines(const std::string& text, std::size_t width);

}  // namespace corvo::telemetry::host
