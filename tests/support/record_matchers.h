#pragma once

#include <gmock/gmock.h>

#include <string>

#include "common/error.h"

namespace corvo::test {

MATCHER(Succeeded, "is a success record") {
  *result_listener << telemetry::common::ErrorText(arg);
  return !arg.Failed() && arg.what.empty() && arg.type.empty() && arg.origin.empty();
}

MATCHER_P(FailedWith, text, "is a failure whose text holds \"" + std::string(text) + "\"") {
  *result_listener << telemetry::common::ErrorText(arg);
  return arg.Failed() && arg.what.find(text) != std::string::npos;
}

/// The operation's own record: category EC_Std, code 1, this text.
MATCHER_P(OwnError, text, "is the engine's own record with the text \"" + std::string(text) + "\"") {
  *result_listener << telemetry::common::ErrorText(arg);
  return arg.category == telemetry::common::EC_Std && arg.code == 1 && arg.what == text &&
         arg.type == "std::runtime_error" && arg.origin.empty();
}

}  // namespace corvo::test
