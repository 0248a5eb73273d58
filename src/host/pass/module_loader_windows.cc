#include <fmt/core.h>
#include <windows.h>

#include <system_error>

#include "host/pass/module_loader.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

using shared::plugin::IDynamicPluginModule;
using LoadPluginFunction = IDynamicPluginModule* (*)();

struct FreeModule {
  void operator()(HMODULE library) const { FreeLibrary(library); }
};
using Library = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

class WindowsModule : public LoadedModule {
 public:
  WindowsModule(Library library, std::unique_ptr<IDynamicPluginModule> module)
      : library_(std::move(library)), module_(std::move(module)) {}

  IDynamicPluginModule& Module() override { return *module_; }

 private:
  // The order matters: the module's code lives in the library.
  Library library_;
  std::unique_ptr<IDynamicPluginModule> module_;
};

[[noreturn]] void Fail(const std::filesystem::path& file, const std::string& reason) {
  throw CommandFailure(
      kModuleNotLoadable,
      fmt::format("cannot load the module: {}: {}; name the right file with --plugin", file.string(), reason));
}

}  // namespace

std::unique_ptr<LoadedModule> LoadModule(const std::filesystem::path& file) {
  // Its libraries are looked for beside the module and in the system's own directory only.
  Library library(LoadLibraryExW(std::filesystem::absolute(file).c_str(), nullptr,
                                 LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (library == nullptr) {
    Fail(file, std::system_category().message(static_cast<int>(GetLastError())));
  }
  const FARPROC address = GetProcAddress(library.get(), "LoadPlugin");
  if (address == nullptr) {
    Fail(file, "it exports no LoadPlugin");
  }
  // Through void*: compilers warn of a cast between unlike function types.
  const auto load_plugin = reinterpret_cast<LoadPluginFunction>(reinterpret_cast<void*>(address));
  std::unique_ptr<IDynamicPluginModule> module(load_plugin());
  if (module == nullptr) {
    Fail(file, "LoadPlugin gave no module");
  }
  return std::make_unique<WindowsModule>(std::move(library), std::move(module));
}

}  // namespace corvo::telemetry::host
