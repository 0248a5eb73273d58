#pragma once

#include <cstdint>
#include <string>

#include "host/show/failure.h"

namespace corvo::telemetry::host {

struct GenerateOptions {
  std::string data_dir;
  std::uint64_t seed = 1;
  double scale = 1;
  std::uint32_t days = 0;  ///< 0: as far back as each table's retention asks for
  std::string now;         ///< day, empty for today
  bool force = false;
};

/// `generate`: writes databases that give a pass something to do.
///
/// @throws CommandFailure (`kUsage`) when the directory cannot be made, or holds databases already.
ExitCode GenerateCommand(const GenerateOptions& options);

}  // namespace corvo::telemetry::host
