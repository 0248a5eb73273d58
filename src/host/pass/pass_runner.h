#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "framework/plugin_module.h"
#include "host/facts/run_report.h"
#include "host/pass/pass_watcher.h"

namespace corvo::telemetry::host {

/// How a pass ended, and what its statements did.
struct PassResult {
  PassOutcome outcome;
  std::map<std::string, Visit> visits;  ///< by file name
};

/// Runs one pass of the module over the databases that the storage library lets it open.
///
/// @param databases how many these are, for the progress; 0 shows none.
[[nodiscard]] PassResult RunPass(shared::plugin::IDynamicPluginModule& module, std::size_t databases);

}  // namespace corvo::telemetry::host
