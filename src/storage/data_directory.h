#pragma once

namespace corvo::shared {

/// The platform's directory of telemetry databases.
[[nodiscard]] const char* PlatformDataDirectory();

}  // namespace corvo::shared
