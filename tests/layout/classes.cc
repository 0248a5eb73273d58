// The classes with virtual operations that libraries and hosts share. Using one makes the compiler lay it out.
#include "cleanup/data_cleanup.h"
#include "contracts/collection.h"
#include "storage/sql_command.h"

namespace corvo::test {

void LayOut(shared::ICommand* command, shared::SqlCommand* sql_command, shared::plugin::IDynamicPluginModule* module,
            telemetry::common::TelemetryCollectorBase* collector, DataCleanup* cleanup, telemetry::common::Error* error,
            telemetry::common::collection::ContractsCollection* contracts) {
  delete command;
  delete sql_command;
  delete module;
  delete collector;
  delete cleanup;
  delete error;
  delete contracts;
}

}  // namespace corvo::test
