#pragma once

#include <string>

#include "host/facts/record/promises.h"

namespace corvo::telemetry::host {

/// What breaks a promise, with the table and without the database, in one line.
[[nodiscard]] std::string BreachText(const Breach& breach);

}  // namespace corvo::telemetry::host
