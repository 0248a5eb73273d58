#include "framework/telemetry_collector_base.h"

#include <memory>

// The interfaces above the collector have no more to define: one place for their tables of virtual operations.
namespace corvo::shared::plugin {

PluginBufferAllocator::~PluginBufferAllocator() = default;
IPluginModule::~IPluginModule() = default;

}  // namespace corvo::shared::plugin

namespace corvo::telemetry::common {

TelemetryCollectorBase::TelemetryCollectorBase() = default;
TelemetryCollectorBase::~TelemetryCollectorBase() = default;

void TelemetryCollectorBase::Execute(const char* input, char* /*output*/) { static_cast<void>(Collect(input)); }

void TelemetryCollectorBase::Execute(const char* input, char*& output,
                                     const corvo::shared::plugin::PluginBufferAllocator& allocator) {
  const Error result = Collect(input);
  // The older entry passes a null reference on purpose; this file is compiled so that the test survives.
  if (std::addressof(allocator) == nullptr) {
    return;
  }
  char* const text = allocator.Allocate(static_cast<std::size_t>(ErrorToJson(result, nullptr)));
  if (text == nullptr) {
    return;
  }
  ErrorToJson(result, text);
  output = text;
}

Error TelemetryCollectorBase::Finalize(const Error& result) { return result; }

void TelemetryCollectorBase::Configure(const char* /*input*/) {}

Error TelemetryCollectorBase::Collect(const char* input) {
  Configure(input);
  return Finalize(ReadSource());
}

}  // namespace corvo::telemetry::common
