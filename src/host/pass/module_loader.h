#pragma once

#include <filesystem>
#include <memory>

#include "framework/plugin_module.h"

namespace corvo::telemetry::host {

/// A loaded plug-in library with one module object. The destructor deletes the module first, then unloads the library.
class LoadedModule {
 public:
  virtual ~LoadedModule() = default;
  [[nodiscard]] virtual shared::plugin::IDynamicPluginModule& Module() = 0;
};

/// Loads a plug-in library by its full path, never by search, and creates one module with its `LoadPlugin`.
///
/// @throws CommandFailure (`kModuleNotLoadable`) when the file is no library, exports no `LoadPlugin`, or gives no
/// module.
[[nodiscard]] std::unique_ptr<LoadedModule> LoadModule(const std::filesystem::path& file);

}  // namespace corvo::telemetry::host
