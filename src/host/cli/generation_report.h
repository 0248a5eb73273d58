#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/samples/generation_plan.h"
#include "host/samples/live_writing.h"
#include "host/samples/sample_files.h"

namespace corvo::telemetry::host {

/// What `generate` did.
struct Generation {
  std::filesystem::path directory;
  std::int64_t now = 0;    ///< where the rows end, in seconds since 1970-01-01 UTC
  std::uint64_t seed = 0;  ///< of all values
  double scale = 1;
  GenerationPlan plan = {};                     ///< of the databases that were written; of none when they were there
  std::vector<WrittenDatabase> databases = {};  ///< none when they were there
  std::optional<LiveResult> live = {};          ///< what was added afterwards
  int signal = 0;                               ///< of the user who ended that early
};

/// The document of `generate --json`.
[[nodiscard]] std::string GenerationJson(const Generation& generation, const CatalogueView& catalogue);

/// What was written, for people.
[[nodiscard]] std::string GenerationText(const Generation& generation, bool colour);

/// What was added afterwards, for people; there is something that was.
[[nodiscard]] std::string LiveText(const Generation& generation);

}  // namespace corvo::telemetry::host
