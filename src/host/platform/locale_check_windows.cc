#include "host/platform/locale_check.h"

namespace corvo::telemetry::host {

// Timestamps do without named locales here.
std::string MissingLocaleHint() { return {}; }

}  // namespace corvo::telemetry::host
