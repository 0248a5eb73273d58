#include "common/type_name.h"

#include <cstdlib>
#include <memory>

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#endif

namespace corvo::telemetry::common {

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

}  // namespace corvo::telemetry::common
