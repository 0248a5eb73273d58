#pragma once

#include "framework/plugin_module.h"
#include "host/facts/run_report.h"
#include "host/pass/directory_run.h"

namespace corvo::telemetry::host {

/// What `Run` would do to the directory now: the module works on copies of its databases, in a directory of their own
/// that goes with the call, on every path. The databases stay as they are, byte for byte.
///
/// Each copy is the database at one moment, also while others write to it. Sizes before the run are those of the
/// databases; sizes after it those of the copies, which nobody else has open. Beside what a run's report says it tells
/// the oldest row that would be left in each table. Whether another program holds a database locked is not asked.
///
/// @throws CommandFailure (`kPassFailed`) when there is no room for the copies, or no place to make them in.
[[nodiscard]] RunReport Plan(shared::plugin::IDynamicPluginModule& module, const DirectoryRun& run);

}  // namespace corvo::telemetry::host
