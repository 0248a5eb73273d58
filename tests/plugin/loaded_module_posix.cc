#include <dlfcn.h>

#include <stdexcept>

#include "plugin/loaded_module.h"

namespace corvo::test {

std::filesystem::path LoadedModule::File() { return CORVO_MODULE_FILE; }

bool LoadedModule::IsInProcess(const std::filesystem::path& file) {
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

std::filesystem::path LoadedModule::CopyTo(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(File().parent_path())) {
    if (entry.path() != File()) {
      std::filesystem::create_symlink(std::filesystem::canonical(entry.path()), folder / entry.path().filename());
    }
  }
  const auto copy = folder / File().filename();
  std::filesystem::copy_file(std::filesystem::canonical(File()), copy);
  return copy;
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
