#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "damage/damage.h"

namespace corvo::test {

/// How a pass over one damaged database ended.
struct Outcome {
  enum class End { kCleaned, kRefusedAsDamaged, kFailedOtherwise };

  End end = End::kCleaned;
  std::string failure;            ///< text of the pass's record
  std::vector<std::string> lost;  ///< rows that could be read before, cannot be read now, and that no rule names
};

/// Runs one pass over a copy of the image in a new folder below `folder`, and compares what plain SQLite can read
/// before and after. The folder is gone afterwards, unless the process ends before.
[[nodiscard]] Outcome CleanDamaged(const DamagedImage& image, const std::filesystem::path& folder);

}  // namespace corvo::test
