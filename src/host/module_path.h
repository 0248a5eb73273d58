#pragma once

#include <filesystem>

namespace corvo::telemetry::host {

/// Where the module is found when none is named: ../lib/corvo-telemetry/ beside the program's own directory, in the
/// build tree as in the installed one.
[[nodiscard]] std::filesystem::path DefaultModulePath();

}  // namespace corvo::telemetry::host
