#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {

#ifdef __MINGW32__
// Its standard library has the classic locale only, which formats timestamps alike.
std::locale TimestampLocale() { return std::locale::classic(); }
#else
std::locale TimestampLocale() { return std::locale("en_US"); }
#endif

// The runtime leaves a second leap second and years of five digits out of the text instead of failing.
bool CanFormat(const std::tm& time) { return time.tm_sec <= 60 && time.tm_year <= 9999 - 1900; }

}  // namespace corvo::telemetry::common
