#pragma once

#include <cstddef>

#include "common/commons_export.h"

namespace corvo::shared::plugin {

/// Memory for a plug-in's output, given by the host.
class CORVO_COMMONS_API PluginBufferAllocator {
 public:
  virtual ~PluginBufferAllocator();

  /// Returns at least `size` bytes that the host owns and frees, or null when there is none.
  [[nodiscard]] virtual char* Allocate(std::size_t size) const = 0;
};

/// The older plug-in interface. An object is used from one thread at a time. The order of the virtual operations is
/// binary contract: never reorder them.
class CORVO_COMMONS_API IPluginModule {
 public:
  /// Runs the module once on `input` (zero-terminated text). `output` is a buffer whose size the module is not told.
  virtual void Execute(const char* input, char* output) = 0;
  virtual ~IPluginModule();
};

/// The dynamic plug-in interface: the output's memory comes from the host's allocator.
class CORVO_COMMONS_API IDynamicPluginModule : public IPluginModule {
 public:
  using IPluginModule::Execute;

  /// Runs the module once on `input` (zero-terminated text).
  ///
  /// @param output receives memory from `allocator`, which the host then owns; untouched when there is no output.
  virtual void Execute(const char* input, char*& output, const PluginBufferAllocator& allocator) = 0;
};

}  // namespace corvo::shared::plugin
