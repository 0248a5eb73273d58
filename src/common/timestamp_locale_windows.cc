#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {

#ifdef __MINGW32__
// Its standard library has the classic locale only, which formats timestamps alike.
std::locale TimestampLocale() { return std::locale::classic(); }
#else
std::locale TimestampLocale() { return std::locale("en_US"); }
#endif

}  // namespace corvo::telemetry::common
