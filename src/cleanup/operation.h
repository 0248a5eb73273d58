#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "common/error.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::cleanup {

using Rows = shared::DynamicArray<shared::DynamicArray<shared::Column>>;

/// Runs one statement. A failure is thrown as an `Error`, so that one handler serves every failure of an operation.
void RunStatement(shared::TelemetryStorage& storage, const std::string& sql);

/// Runs one query and returns its rows. Failures as above.
[[nodiscard]] Rows RunQuery(shared::TelemetryStorage& storage, const std::string& sql);

/// The record of an operation's own fixed text: "<operation>(<line><phrase>", the phrase beginning with ")".
[[nodiscard]] common::Error OperationError(const char* operation, int line, const char* phrase);

}  // namespace corvo::telemetry::cleanup
