#pragma once

#include <filesystem>
#include <memory>

#include "framework/plugin_module.h"
#include "host/platform/shared_library.h"

namespace corvo::telemetry::host {

/// A loaded plug-in library with one module object, made by its `LoadPlugin`. The destructor deletes the module first,
/// then unloads the library.
class LoadedModule {
 public:
  /// @throws CommandFailure (`kModuleNotLoadable`) when the file is no library, exports no `LoadPlugin`, or gives no
  /// module.
  explicit LoadedModule(const std::filesystem::path& file);
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule() = default;

  [[nodiscard]] shared::plugin::IDynamicPluginModule& Module() { return *module_; }

 private:
  // The order matters: the module's code lives in the library.
  SharedLibrary library_;
  std::unique_ptr<shared::plugin::IDynamicPluginModule> module_;
};

/// Where the module is found when none is named: beside the program on Windows, in ../lib/corvo-telemetry/ elsewhere;
/// in the build tree as in the installed one.
[[nodiscard]] std::filesystem::path DefaultModulePath();

}  // namespace corvo::telemetry::host
