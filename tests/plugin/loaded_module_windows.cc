#include <windows.h>

#include <system_error>

#include "plugin/loaded_module.h"

namespace corvo::test {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

}  // namespace

std::filesystem::path LoadedModule::File() { return CORVO_MODULE_FILE; }

bool LoadedModule::IsInProcess(const std::filesystem::path& file) {
  return GetModuleHandleW(std::filesystem::absolute(file).make_preferred().c_str()) != nullptr;
}

std::filesystem::path LoadedModule::CopyTo(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(File().parent_path())) {
    if (entry.path().extension() == ".dll") {
      std::filesystem::copy_file(entry.path(), folder / entry.path().filename());
    }
  }
  return folder / File().filename();
}

LoadedModule::LoadedModule(const std::filesystem::path& file)
    : handle_(LoadLibraryExW(std::filesystem::absolute(file).make_preferred().c_str(), nullptr,
                             LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32)) {
  if (handle_ == nullptr) {
    Fail(file.string());
  }
}

LoadedModule::~LoadedModule() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* LoadedModule::Symbol(const char* name) const {
  const FARPROC address = GetProcAddress(static_cast<HMODULE>(handle_), name);
  if (address == nullptr) {
    Fail(name);
  }
  return reinterpret_cast<void*>(address);
}

LoadedModule::Object LoadedModule::NewObject(const char* name) const {
  return Object(reinterpret_cast<LoadFunction>(Symbol(name))());
}

}  // namespace corvo::test
