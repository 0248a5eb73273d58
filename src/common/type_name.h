#pragma once

#include <string>
#include <typeinfo>

namespace corvo::telemetry::common {

/// The readable name of a run-time type; the same type always gives the same name.
[[nodiscard]] std::string TypeName(const std::type_info& type);

}  // namespace corvo::telemetry::common
