#pragma once

#include <filesystem>
#include <memory>

#include "framework/plugin_module.h"

namespace corvo::test {

/// The real module, loaded as a host loads it and unloaded again with the object.
class LoadedModule {
 public:
  using Object = std::unique_ptr<shared::plugin::IDynamicPluginModule>;
  using LoadFunction = shared::plugin::IDynamicPluginModule* (*)();

  /// The names under which the module exports its one function.
  static constexpr const char* kPlainName = "LoadPlugin";
  static constexpr const char* kQualifiedName = "_ZN5corvo9telemetry6plugin17datacleanupplugin10LoadPluginEv";

  /// The module of this build.
  [[nodiscard]] static std::filesystem::path File();

  /// Whether that file is loaded in this process.
  [[nodiscard]] static bool IsInProcess(const std::filesystem::path& file);

  /// Puts a second copy of the module into a folder, beside the same libraries.
  [[nodiscard]] static std::filesystem::path CopyTo(const std::filesystem::path& folder);

  explicit LoadedModule(const std::filesystem::path& file = File());
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule();

  /// Address of an export; throws std::runtime_error when there is none.
  [[nodiscard]] void* Symbol(const char* name) const;

  /// A new object of the module, which must go before the module.
  [[nodiscard]] Object NewObject(const char* name = kPlainName) const;

 private:
  void* handle_;
};

}  // namespace corvo::test
