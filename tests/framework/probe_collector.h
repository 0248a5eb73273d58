#pragma once

#include <functional>
#include <string>
#include <vector>

#include "framework/telemetry_collector_base.h"

namespace corvo::test {

/// A collector that notes what is called on it, and can be told what each step does besides.
class ProbeCollector : public telemetry::common::TelemetryCollectorBase {
 public:
  using Error = telemetry::common::Error;

  explicit ProbeCollector(std::vector<std::string>& calls) : calls_(calls) {}
  ProbeCollector(const ProbeCollector&) = delete;
  ProbeCollector& operator=(const ProbeCollector&) = delete;
  ~ProbeCollector() override { calls_.emplace_back("destroyed"); }

  void Configure(const char* input) override {
    calls_.push_back(std::string("Configure ") + (input != nullptr ? input : "null"));
    if (on_configure) {
      on_configure();
    }
  }

  Error ReadSource() override {
    calls_.emplace_back("ReadSource");
    if (on_read) {
      on_read();
    }
    return read_result;
  }

  std::function<void()> on_configure;
  std::function<void()> on_read;
  std::function<Error(const Error&)> on_finalize = [](const Error& result) { return result; };
  Error read_result;

 protected:
  Error Finalize(const Error& result) override {
    calls_.push_back("Finalize " + result.what);
    return on_finalize(result);
  }

 private:
  std::vector<std::string>& calls_;
};

}  // namespace corvo::test
