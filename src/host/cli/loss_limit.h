#pragma once

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Keeps a run from beginning when a table would lose more of its rows than the user allows, by a plan of that run.
///
/// @param max_loss in percent of the rows before the run.
/// @throws CommandFailure (`kFindings`) that names the tables which would lose most; (`kPassFailed`) when a database
/// that the run may clean could not be planned for.
void RequireLittleLoss(const RunReport& plan, double max_loss);

}  // namespace corvo::telemetry::host
