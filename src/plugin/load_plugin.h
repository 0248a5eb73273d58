#pragma once

#include "framework/plugin_module.h"

namespace corvo::telemetry::plugin::datacleanupplugin {

/// Creates a module object; each call gives a new one.
///
/// The module exports this function under its own name and as plain `kLoadPluginName`. A host does not link the module:
/// it loads the file, looks the plain name up and casts the address to `LoadPluginFunction`.
///
/// The caller owns the object and deletes it. The object's code lives in the module, so the order is: the last run has
/// ended, delete every object, unload the module. The outputs of runs lie in memory of the host's allocator and outlive
/// both. The module may be loaded and unloaded any number of times.
///
/// @throws std::bad_alloc when there is no memory.
[[nodiscard]] shared::plugin::IDynamicPluginModule* LoadPlugin();

/// The type of the function that the module exports.
using LoadPluginFunction = decltype(&LoadPlugin);

/// The name to look it up by.
inline constexpr const char* kLoadPluginName = "LoadPlugin";

}  // namespace corvo::telemetry::plugin::datacleanupplugin
