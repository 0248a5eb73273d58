#include "plugin/load_plugin.h"

#include "plugin/data_cleanup_plugin.h"

namespace corvo::telemetry::plugin::datacleanupplugin {

shared::plugin::IDynamicPluginModule* LoadPlugin() { return new DataCleanupPlugin(); }

}  // namespace corvo::telemetry::plugin::datacleanupplugin
