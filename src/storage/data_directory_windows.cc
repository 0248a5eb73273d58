#include "storage/data_directory.h"

namespace corvo::shared {

const char* PlatformDataDirectory() { return "c:\\ProgramData\\Corvo\\Telemetry\\Data\\"; }

}  // namespace corvo::shared
