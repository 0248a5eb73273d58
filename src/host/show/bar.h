#pragma once

#include <cstddef>
#include <string>

namespace corvo::telemetry::host {

/// A bar that is filled to a share of its width: in eighths of a character with block elements, else in whole ones. One
/// that is above 1 is full and ends in '>'; nothing but 0 is empty, and nothing below 1 is full.
///
/// @param share at least 0.
/// @param width in characters, at least 1.
[[nodiscard]] std::string Bar(double share, std::size_t width, bool blocks);

}  // namespace corvo::telemetry::host
