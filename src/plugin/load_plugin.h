#pragma once

#include "framework/plugin_module.h"

namespace corvo::telemetry::plugin::datacleanupplugin {

/// Creates a module object, which the caller owns. The module exports it under this name and as plain `LoadPlugin`.
///
/// @throws std::bad_alloc when there is no memory.
[[nodiscard]] shared::plugin::IDynamicPluginModule* LoadPlugin();

}  // namespace corvo::telemetry::plugin::datacleanupplugin
