#pragma once

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

/// Refuses a schema with an object of its own under the name of the engine's page statistics: it would answer in their
/// place.
telemetry::common::Error CheckSchema(sqlite3* handle);

/// Refuses a damaged file. Compaction copies what it can still reach and reports success, so it can lose rows that
/// other statements can still read.
telemetry::common::Error CheckBeforeCompaction(sqlite3* handle);

}  // namespace corvo::shared
