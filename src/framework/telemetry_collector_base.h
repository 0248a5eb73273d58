#pragma once

#include "common/commons_export.h"
#include "common/error.h"
#include "framework/plugin_module.h"

/// Root of the host's collectors; adds nothing to the interface.
class CORVO_COMMONS_API TelemetryCollectorBaseClass : public corvo::shared::plugin::IDynamicPluginModule {};

namespace corvo::telemetry::common {

/// Drives one collection: `Configure`, `ReadSource`, `Finalize`, in that order, on the calling thread.
///
/// The order of the virtual operations is binary contract: never reorder them. Nothing is caught here: an exception
/// from a collector reaches the caller of `Execute`.
class CORVO_COMMONS_API TelemetryCollectorBase : public TelemetryCollectorBaseClass {
 public:
  TelemetryCollectorBase();
  ~TelemetryCollectorBase() override;

  /// Runs the collection and drops its result: this form is not told how much `output` holds, so it writes nothing.
  void Execute(const char* input, char* output) override;

  /// Runs the collection and hands out the JSON text of the record that `Finalize` returned.
  ///
  /// @param output receives the zero-terminated text in memory from `allocator`; untouched when `allocator` is a null
  ///   reference (hosts of the older interface have none) or gives no memory.
  /// @throws whatever the collector or the allocator throws; `nlohmann::json::exception` when a text of the record is
  ///   not valid UTF-8.
  void Execute(const char* input, char*& output,
               const corvo::shared::plugin::PluginBufferAllocator& allocator) override;

 protected:
  /// Last word on the result of `ReadSource`; returns it unchanged unless overridden.
  virtual Error Finalize(const Error& result);

 public:
  /// Hands the host's input to the collector before it reads; does nothing unless overridden.
  virtual void Configure(const char* input);

  /// Does the collector's work and says how it ended.
  virtual Error ReadSource() = 0;

 private:
  Error Collect(const char* input);
};

}  // namespace corvo::telemetry::common
