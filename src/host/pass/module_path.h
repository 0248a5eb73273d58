#pragma once

#include <filesystem>

namespace corvo::telemetry::host {

/// Where the module is found when none is named: beside the program on Windows, in ../lib/corvo-telemetry/ elsewhere;
/// in the build tree as in the installed one.
[[nodiscard]] std::filesystem::path DefaultModulePath();

}  // namespace corvo::telemetry::host
