#include "plugin/loaded_module_posix.h"

#include <dlfcn.h>

#include <stdexcept>

namespace corvo::test {

std::filesystem::path LoadedModule::File() { return CORVO_MODULE_FILE; }

bool LoadedModule::IsInProcess(const std::filesystem::path& file) {
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

LoadedModule::LoadedModule(const std::filesystem::path& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) {
    throw std::runtime_error(dlerror());
  }
}

LoadedModule::~LoadedModule() { dlclose(handle_); }

void* LoadedModule::Symbol(const char* name) const {
  void* const address = dlsym(handle_, name);
  if (address == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return address;
}

LoadedModule::Object LoadedModule::NewObject(const char* name) const {
  return Object(reinterpret_cast<LoadFunction>(Symbol(name))());
}

}  // namespace corvo::test
