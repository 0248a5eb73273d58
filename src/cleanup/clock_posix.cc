#include <ctime>

#include "cleanup/clock.h"

namespace corvo::telemetry::cleanup {

std::int64_t CurrentTime() { return std::time(nullptr); }

}  // namespace corvo::telemetry::cleanup
