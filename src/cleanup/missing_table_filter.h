#pragma once

#include "common/error.h"

namespace corvo::telemetry::cleanup {

/// Turns a failure that reports a missing table into a success: a table that was never created counts as clean.
void ClearNoSuchTableError(common::Error& error);

}  // namespace corvo::telemetry::cleanup
