#include "support/kept_options.h"

#include "contracts/lookups.h"

namespace corvo::test {

KeptOptions::KeptOptions(const std::vector<google::protobuf::Message*>& contracts) {
  for (const auto* contract : contracts) {
    const Options& options = telemetry::contracts::GetPersistance(*contract);
    kept_.emplace_back(const_cast<Options*>(&options), options);
  }
}

KeptOptions::~KeptOptions() {
  for (const auto& [shared, value] : kept_) {
    *shared = value;
  }
}

}  // namespace corvo::test
