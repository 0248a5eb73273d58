#pragma once

#include <stdexcept>
#include <string>

#include "common/error.h"
#include "storage/telemetry_storage.h"

// What every operation of the engine is made of: one statement sent to a storage, and a failure told.

namespace corvo::telemetry::cleanup {

/// Runs one statement, as a list of one, and returns how it ended.
[[nodiscard]] common::Error TryStatement(shared::TelemetryStorage& storage, const std::string& sql);

/// Runs one statement. A failure is thrown as an `Error`, so that one handler serves every failure of an operation.
void RunStatement(shared::TelemetryStorage& storage, const std::string& sql);

/// Runs one query and returns its rows. Failures as above.
[[nodiscard]] shared::Rows RunQuery(shared::TelemetryStorage& storage, const std::string& sql);

/// A failure of the operation's own, with its fixed text: "<operation>(<line>) <phrase>".
[[nodiscard]] std::runtime_error OperationFailure(const char* operation, int line, const char* phrase);

/// Writes a record at error severity, with the operation as its tag: "<operation> - exception : <what>".
void LogException(const char* operation, const common::Error& what);
void LogException(const char* operation, const char* what);

/// Turns a failure that reports a missing table into a success: a table that was never created counts as clean.
void ClearNoSuchTableError(common::Error& error);

}  // namespace corvo::telemetry::cleanup
