#include "cleanup/data_cleanup.h"
#include "cleanup/operation.h"
#include "contracts/lookups.h"

using namespace corvo::telemetry;

namespace {

constexpr int kHandlerLine = 563;

}  // namespace

common::Error DataCleanup::Vacuum(const Message* message) {
  Error result;
  if (message == nullptr) {
    return result;
  }
  try {
    corvo::shared::TelemetryStorage storage(message, "");
    // The statement names no table; a type whose name cannot be read fails here, as in every other operation.
    static_cast<void>(contracts::GetTableName(message));
    result = cleanup::TryStatement(storage, "VACUUM;");
  } catch (...) {
    // One wording whatever was caught, kept as it is on purpose.
    result = Error(cleanup::OperationFailure("DataCleanup::Vacuum", kHandlerLine, "message is NULL"));
  }
  cleanup::ClearNoSuchTableError(result);
  return result;
}
