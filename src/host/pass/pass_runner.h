#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/plugin_module.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {

struct PassOutcome {
  Json result;  ///< the record that the module gave, or one made here when it gave none
  std::int64_t rows_deleted;
  double seconds;
  std::string failed_database;  ///< path; empty when no statement failed
};

/// True when the record says that something failed.
[[nodiscard]] bool Failed(const Json& result);

/// Runs passes of the module one after the other, up to the first that fails.
///
/// @param show_progress whether a person watches standard error.
[[nodiscard]] std::vector<PassOutcome> RunPasses(shared::plugin::IDynamicPluginModule& module, int passes,
                                                 bool show_progress);

}  // namespace corvo::telemetry::host
