#pragma once

#include <vector>

#include "framework/plugin_module.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Runs passes of the module one after the other, up to the first that fails.
///
/// @param show_progress whether a person watches standard error.
[[nodiscard]] std::vector<PassOutcome> RunPasses(shared::plugin::IDynamicPluginModule& module, int passes,
                                                 bool show_progress);

}  // namespace corvo::telemetry::host
