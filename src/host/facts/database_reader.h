#pragma once

#include <cstdint>

#include "host/facts/directory_state.h"

namespace corvo::telemetry::host {

/// Reads what the file of the database holds, in one transaction, and foresees what a run would delete from it now.
///
/// @param database with its path, its limit, its tables' contracts and the bytes of its files; gets the rest.
/// @return why it cannot be read at all; what is wrong with a table alone is told by the table.
[[nodiscard]] common::Error ReadDatabase(DatabaseState& database, std::int64_t now);

}  // namespace corvo::telemetry::host
