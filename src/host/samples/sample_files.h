#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/samples/generation_plan.h"

namespace corvo::telemetry::host {

struct SampleRequest {
  std::filesystem::path directory;  ///< absolute; made when it is missing
  std::int64_t now;                 ///< end of the rows, in seconds since 1970-01-01 UTC
  std::uint64_t seed;
  bool replace;  ///< the catalogue's databases, the one that the plan leaves out included
};

struct WrittenDatabase {
  std::string name;
  std::filesystem::path path;
  std::size_t tables;
  std::int64_t rows;
  std::int64_t bytes;
};

/// Writes the databases of a plan into a directory, all of them or none: after a failure the directory is as it was.
///
/// @throws CommandFailure (`kUsage`) when the directory cannot be made, holds databases and `replace` is not set, or
/// has something else than an ordinary file under a name that is to be replaced; std::runtime_error when writing fails.
[[nodiscard]] std::vector<WrittenDatabase> WriteSamples(const GenerationPlan& plan, const CatalogueView& catalogue,
                                                        const SampleRequest& request);

}  // namespace corvo::telemetry::host
