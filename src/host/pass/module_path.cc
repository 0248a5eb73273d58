#include "host/pass/module_path.h"

#include "host/platform/platform.h"

namespace corvo::telemetry::host {

std::filesystem::path DefaultModulePath() { return (ProgramDirectory() / CORVO_MODULE_FILE).lexically_normal(); }

}  // namespace corvo::telemetry::host
