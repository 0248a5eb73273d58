#include "host/pass/loaded_module.h"

#include <fmt/core.h>

#include <stdexcept>

#include "common/text.h"
#include "host/platform/platform.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

using shared::plugin::IDynamicPluginModule;
using LoadPluginFunction = IDynamicPluginModule* (*)();

[[noreturn]] void Fail(const std::string& reason) {
  throw CommandFailure(kModuleNotLoadable,
                       fmt::format("cannot load the module: {}; name the right file with --plugin", reason));
}

SharedLibrary Load(const std::filesystem::path& file) {
  try {
    return SharedLibrary(file);
  } catch (const std::runtime_error& error) {
    Fail(error.what());
  }
}

IDynamicPluginModule* MakeModule(const SharedLibrary& library, const std::filesystem::path& file) {
  const auto load_plugin = reinterpret_cast<LoadPluginFunction>(library.Find("LoadPlugin"));
  if (load_plugin == nullptr) {
    Fail(fmt::format("{} exports no LoadPlugin", common::Utf8(file)));
  }
  IDynamicPluginModule* module = load_plugin();
  if (module == nullptr) {
    Fail(fmt::format("LoadPlugin of {} gave no module", common::Utf8(file)));
  }
  return module;
}

}  // namespace

LoadedModule::LoadedModule(const std::filesystem::path& file)
    : library_(Load(file)), module_(MakeModule(library_, file)) {}

std::filesystem::path DefaultModulePath() { return (ProgramDirectory() / CORVO_MODULE_FILE).lexically_normal(); }

}  // namespace corvo::telemetry::host
