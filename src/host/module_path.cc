#include "host/module_path.h"

#include "host/platform.h"

namespace corvo::telemetry::host {

std::filesystem::path DefaultModulePath() {
  return ProgramDirectory().parent_path() / "lib" / "corvo-telemetry" / CORVO_MODULE_FILE;
}

}  // namespace corvo::telemetry::host
