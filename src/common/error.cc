#include "common/error.h"

#include "common/type_name.h"

namespace corvo::telemetry::common {
namespace {

std::string SystemErrorText(const std::system_error& e) {
  return std::string("message: '") + e.what() + "' system code : '" + e.code().category().name() + ":" +
         std::to_string(e.code().value()) + "'";
}

}  // namespace

Error::Error() = default;

Error::Error(const std::exception& e) : category(EC_Std), code(1), what(e.what()), type(TypeName(typeid(e))) {}

Error::Error(const std::system_error& e)
    : category(EC_Std), code(1), what(SystemErrorText(e)), type(TypeName(typeid(e))) {}

Error::Error(const Error&) = default;
Error& Error::operator=(const Error&) = default;
Error::~Error() = default;

}  // namespace corvo::telemetry::common
