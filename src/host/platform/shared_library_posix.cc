#include <dlfcn.h>

#include <stdexcept>

#include "host/platform/shared_library.h"

namespace corvo::telemetry::host {

SharedLibrary::SharedLibrary(const std::filesystem::path& file)
    : handle_(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) {
    throw std::runtime_error(dlerror());
  }
}

SharedLibrary::~SharedLibrary() { dlclose(handle_); }

void* SharedLibrary::Find(const char* function) const { return dlsym(handle_, function); }

}  // namespace corvo::telemetry::host
