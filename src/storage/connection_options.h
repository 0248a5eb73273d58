#pragma once

#include "common/error.h"

struct sqlite3;

namespace corvo::shared {

/// Makes a new connection safe for files of unknown origin, and alike on every platform. Neither reads the file nor
/// takes a lock.
telemetry::common::Error SetConnectionOptions(sqlite3* handle);

}  // namespace corvo::shared
