#include "support/fake_clock.h"

#include "cleanup/clock.h"

namespace corvo::test {
namespace {

std::int64_t current_time = FakeClock::kStart;

}  // namespace

FakeClock::FakeClock(std::int64_t now) { current_time = now; }

FakeClock::~FakeClock() { current_time = kStart; }

}  // namespace corvo::test

namespace corvo::telemetry::cleanup {

std::int64_t CurrentTime() { return test::current_time; }

}  // namespace corvo::telemetry::cleanup
