#include "host/pass/kept_options.h"

#include <google/protobuf/message.h>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"

namespace corvo::telemetry::host {

// The engine writes to the same objects, which nobody made constant.
KeptOptions::KeptOptions() {
  for (const google::protobuf::Message* contract : contracts::ContractCatalogue()) {
    const Options& options = contracts::GetPersistance(*contract);
    kept_.emplace_back(const_cast<Options*>(&options), options);
  }
}

// Nothing grows by it, so nothing can fail: the texts go back by exchange.
KeptOptions::~KeptOptions() {
  for (auto& [shared, value] : kept_) {
    shared->Swap(&value);
  }
}

}  // namespace corvo::telemetry::host
