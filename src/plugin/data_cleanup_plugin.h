#pragma once

#include "framework/plugin_module.h"

namespace corvo::telemetry::plugin {

/// The module object that a host drives: each call of `Execute` is one cleanup pass. It holds no state, so one object
/// serves any number of passes; passes of one process must not overlap.
class DataCleanupPlugin : public shared::plugin::IDynamicPluginModule {
 public:
  /// For hosts of the older interface: runs a pass and hands no output back.
  void Execute(const char* input, char* output) override;
  ~DataCleanupPlugin() override;

  /// Runs a pass. No exception leaves it.
  void Execute(const char* input, char*& output, const shared::plugin::PluginBufferAllocator& allocator) override;
};

}  // namespace corvo::telemetry::plugin
