#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/error.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

// Statements on a database through the storage library. Their rows live as long as the storage, at least.

/// Runs one statement.
///
/// @param rows gets what it answers, when it succeeds; may be null.
common::Error RunStatement(shared::TelemetryStorage& storage, const std::string& sql, shared::Rows* rows = nullptr);

/// One whole number; unchanged when there is none.
common::Error AskNumber(shared::TelemetryStorage& storage, const std::string& sql, std::int64_t& number);

/// One whole number; none when it is NULL or there is no answer.
[[nodiscard]] std::optional<std::int64_t> AskNumberOrNone(shared::TelemetryStorage& storage, const std::string& sql);

/// A value of a row as a whole number; 0 when it is none.
[[nodiscard]] std::int64_t NumberIn(const shared::Column& value);

/// As above; none when it is NULL.
[[nodiscard]] std::optional<std::int64_t> NumberOrNone(const shared::Column& value);

}  // namespace corvo::telemetry::host
