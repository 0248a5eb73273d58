#include <time.h>

#include "cleanup/clock.h"

namespace corvo::telemetry::cleanup {

std::int64_t CurrentTime() { return _time64(nullptr); }

}  // namespace corvo::telemetry::cleanup
