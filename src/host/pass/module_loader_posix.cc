#include <dlfcn.h>
#include <fmt/core.h>

#include "host/pass/module_loader.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

using shared::plugin::IDynamicPluginModule;
using LoadPluginFunction = IDynamicPluginModule* (*)();

struct CloseLibrary {
  void operator()(void* library) const { dlclose(library); }
};

class PosixModule : public LoadedModule {
 public:
  PosixModule(std::unique_ptr<void, CloseLibrary> library, std::unique_ptr<IDynamicPluginModule> module)
      : library_(std::move(library)), module_(std::move(module)) {}

  IDynamicPluginModule& Module() override { return *module_; }

 private:
  // The order matters: the module's code lives in the library.
  std::unique_ptr<void, CloseLibrary> library_;
  std::unique_ptr<IDynamicPluginModule> module_;
};

[[noreturn]] void Fail(const std::string& reason) {
  throw CommandFailure(kModuleNotLoadable,
                       fmt::format("cannot load the module: {}; name the right file with --plugin", reason));
}

}  // namespace

std::unique_ptr<LoadedModule> LoadModule(const std::filesystem::path& file) {
  std::unique_ptr<void, CloseLibrary> library(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL));
  if (library == nullptr) {
    Fail(dlerror());
  }
  const auto load_plugin = reinterpret_cast<LoadPluginFunction>(dlsym(library.get(), "LoadPlugin"));
  if (load_plugin == nullptr) {
    Fail(fmt::format("{} exports no LoadPlugin", file.string()));
  }
  std::unique_ptr<IDynamicPluginModule> module(load_plugin());
  if (module == nullptr) {
    Fail(fmt::format("LoadPlugin of {} gave no module", file.string()));
  }
  return std::make_unique<PosixModule>(std::move(library), std::move(module));
}

}  // namespace corvo::telemetry::host
