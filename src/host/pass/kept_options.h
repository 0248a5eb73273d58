#pragma once

#include <utility>
#include <vector>

#include "corvo/telemetry/contract/storage/persistance.pb.h"

namespace corvo::telemetry::host {

/// Puts the options of all contracts back when it goes: a pass writes through them, for the whole process and for good.
/// One thread at a time, and no pass while it is made or goes.
class KeptOptions {
 public:
  KeptOptions();
  KeptOptions(const KeptOptions&) = delete;
  KeptOptions& operator=(const KeptOptions&) = delete;
  ~KeptOptions();

 private:
  using Options = contract::storage::PersistanceMessageOptions;
  std::vector<std::pair<Options*, Options>> kept_;
};

}  // namespace corvo::telemetry::host
