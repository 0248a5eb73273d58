#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// The text in lines of at most `width` characters, folded at blanks; those after the first are indented. A word that
/// is longer than a line stays whole.
[[nodiscard]] std::vector<std::string> Folded(const std::string& text, std::size_t width);

}  // namespace corvo::telemetry::host
