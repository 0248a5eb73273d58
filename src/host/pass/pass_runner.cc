#include "host/pass/pass_runner.h"

#include <chrono>
#include <cstdlib>
#include <memory>

#include "host/pass/pass_watcher.h"
#include "host/show/failure.h"
#include "host/show/json_text.h"
#include "storage/statement_observer.h"

namespace corvo::telemetry::host {
namespace {

/// Keeps what it gave until the pass is read out.
class OutputAllocator : public shared::plugin::PluginBufferAllocator {
 public:
  [[nodiscard]] char* Allocate(std::size_t size) const override {
    memory_.reset(new (std::nothrow) char[size]);
    return memory_.get();
  }

 private:
  mutable std::unique_ptr<char[]> memory_;
};

common::Error ReadResult(const char* output) {
  const Json result = Json::parse(output == nullptr ? "" : output, nullptr, false);
  if (result.is_object() && result.contains("category") && result["category"].is_string() && result.contains("code") &&
      result["code"].is_number_integer()) {
    return ReadError(result);
  }
  return CommandFailure(kPassFailed, "the module gave no result: see the log (--log-level debug)").Record();
}

// A module should let no exception out. One that does is caught while its code, and with it the exception's, is loaded.
common::Error Execute(shared::plugin::IDynamicPluginModule& module) {
  const OutputAllocator allocator;
  char* output = nullptr;
  try {
    module.Execute("", output, allocator);
  } catch (...) {
    return common::MakeErrorFromException(std::current_exception());
  }
  return ReadResult(output);
}

}  // namespace

PassResult RunPass(shared::plugin::IDynamicPluginModule& module, std::size_t databases) {
  const auto watcher = std::make_shared<PassWatcher>(databases);
  const shared::StatementObserverScope scope(watcher);
  const auto start = std::chrono::steady_clock::now();
  PassResult result;
  result.outcome.result = Execute(module);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  result.outcome.seconds = seconds.count();
  result.outcome.rows_deleted = watcher->RowsDeleted();
  result.outcome.failure = watcher->LastFailure();
  result.visits = watcher->Visits();
  return result;
}

}  // namespace corvo::telemetry::host
