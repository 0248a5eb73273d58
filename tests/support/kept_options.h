#pragma once

#include <google/protobuf/message.h>

#include <utility>
#include <vector>

#include "corvo/telemetry/contract/storage/persistance.pb.h"

namespace corvo::test {

/// Puts the options of contracts back at its end, so that what the engine writes through them ends with the test.
class KeptOptions {
 public:
  explicit KeptOptions(const std::vector<google::protobuf::Message*>& contracts);
  KeptOptions(const KeptOptions&) = delete;
  KeptOptions& operator=(const KeptOptions&) = delete;
  ~KeptOptions();

 private:
  using Options = telemetry::contract::storage::PersistanceMessageOptions;
  std::vector<std::pair<Options*, Options>> kept_;
};

}  // namespace corvo::test
