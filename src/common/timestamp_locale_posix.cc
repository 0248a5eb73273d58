#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {

std::locale TimestampLocale() { return std::locale("en_US"); }

bool CanFormat(const std::tm& /*time*/) { return true; }

}  // namespace corvo::telemetry::common
