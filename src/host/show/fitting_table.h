#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/show/text_table.h"

namespace corvo::telemetry::host {

/// Where a table is to be shown.
struct Display {
  std::size_t width = 80;  ///< in characters
  bool colour = false;
  bool blocks = false;  ///< whether it has the block elements
};

/// One column of a table that fits a width: of texts, or of bars. One that says nothing in any line is left out.
struct FittingColumn {
  std::string head;
  Align align = Align::kRight;
  int rank = 0;  ///< the columns with the highest leave first when the table is too wide; those with 0 stay
  bool bars = false;
  std::vector<std::string> texts = {};
  std::vector<std::optional<double>> shares = {};  ///< of bars, against a limit; none: no bar
};

/// Lays out as many of the columns as fit, under their heads, with bars as wide as the rest allows.
///
/// @param tones one for each line; every column has as many texts, or shares.
[[nodiscard]] std::string FormatFitting(const std::vector<FittingColumn>& columns, const std::vector<Tone>& tones,
                                        const Display& display);

}  // namespace corvo::telemetry::host
