#include "framework/plugin_module.h"

namespace corvo::shared::plugin {

PluginBufferAllocator::~PluginBufferAllocator() = default;
IPluginModule::~IPluginModule() = default;

}  // namespace corvo::shared::plugin
