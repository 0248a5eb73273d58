#include "host/show/failure.h"

#include "host/show/run/run_json.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"

namespace corvo::telemetry::host {

common::Error CommandFailure::Record() const {
  common::Error error;
  error.category = common::EC_Custom;
  error.code = exit_code_;
  error.what = what();
  error.type = "corvo-telemetry-host";
  return error;
}

void ReportFailure(const common::Error& error, bool json, bool interrupted) {
  Tell(error.what);
  if (json) {
    Print(RunDocument(error, interrupted));
  }
}

}  // namespace corvo::telemetry::host
