#include "storage/data_directory.h"

namespace corvo::shared {

const char* PlatformDataDirectory() { return "/var/lib/corvo/telemetry/data/"; }

}  // namespace corvo::shared
