#pragma once

#include <string>

#include "host/show/failure.h"

namespace corvo::telemetry::host {

struct RunOptions {
  std::string data_dir;
  std::string plugin;  ///< empty: the module that belongs to the program
  int passes = 1;
  bool json = false;
  std::string log_level;  ///< empty: the default
  std::string log_file;   ///< empty: standard error
};

/// `run`: lets the module clean the databases of a directory and shows what changed.
///
/// @return `kDone`, or `kPassFailed` when the module's record says so.
/// @throws CommandFailure when a pass cannot begin.
ExitCode RunCommand(const RunOptions& options);

}  // namespace corvo::telemetry::host
