#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {

std::locale TimestampLocale() { return std::locale("en_US"); }

}  // namespace corvo::telemetry::common
