#include "common/error.h"

#include <cstdlib>
#include <memory>
#include <typeinfo>

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#endif

namespace corvo::telemetry::common {
namespace {

/// The readable name of a run-time type; the same type always gives the same name.
std::string TypeName(const std::type_info& type) {
#if __has_include(<cxxabi.h>)
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                         &std::free);
  if (name != nullptr) {
    return name.get();
  }
#endif
  return type.name();
}

std::string SystemErrorText(const std::system_error& e) {
  return std::string("message: '") + e.what() + "' system code : '" + e.code().category().name() + ":" +
         std::to_string(e.code().value()) + "'";
}

template <class Thrown>
Error CustomError(std::int64_t code, const std::string& what) {
  Error error;
  error.category = EC_Custom;
  error.code = code;
  error.what = what;
  error.type = TypeName(typeid(Thrown));
  return error;
}

// A hash at or above 2^63 keeps its bits and reads as a negative code.
template <class Thrown>
std::int64_t HashCode() {
  return static_cast<std::int64_t>(typeid(Thrown).hash_code());
}

Error UnknownError() {
  Error error;
  error.category = EC_Unknown;
  error.what = "Unknown exception type.";
  error.type = "Unknown";
  return error;
}

Error Convert(const std::exception_ptr& p) {
  if (p == nullptr) {
    return UnknownError();
  }
  try {
    std::rethrow_exception(p);
  } catch (const std::system_error& e) {
    return Error(e);
  } catch (const std::exception& e) {
    return Error(e);
  } catch (int n) {
    return CustomError<int>(n, "");
  } catch (unsigned long n) {
    return CustomError<unsigned long>(static_cast<std::int64_t>(n), "");
  } catch (const std::string& s) {
    return CustomError<std::string>(HashCode<std::string>(), s);
  } catch (const char* s) {
    return CustomError<const char*>(HashCode<const char*>(), s != nullptr ? s : "");
  } catch (...) {
    return UnknownError();
  }
}

}  // namespace

Error::Error() = default;

Error::Error(const std::exception& e) : category(EC_Std), code(1), what(e.what()), type(TypeName(typeid(e))) {}

Error::Error(const std::system_error& e)
    : category(EC_Std), code(1), what(SystemErrorText(e)), type(TypeName(typeid(e))) {}

Error::Error(const Error&) = default;
Error::Error(Error&&) noexcept = default;
Error& Error::operator=(const Error&) = default;
Error& Error::operator=(Error&&) noexcept = default;
Error::~Error() = default;

Error MakeErrorFromException(std::exception_ptr p) noexcept {
  try {
    return Convert(p);
  } catch (...) {
    // Only memory can have run out here: a bare record needs none.
    Error error;
    error.category = EC_Unknown;
    return error;
  }
}

}  // namespace corvo::telemetry::common
