#pragma once

#include <google/protobuf/message.h>

#include <vector>

namespace corvo::telemetry::contracts {

/// The contracts whose rows are cleaned, in catalogue order: one default instance a type.
///
/// Filled while the module (or program) is loaded and read-only afterwards, so any thread may read it. The instances
/// live until the process ends.
[[nodiscard]] const std::vector<google::protobuf::Message*>& ContractCatalogue();

/// The messages that stand for whole databases, in catalogue order; otherwise as above.
[[nodiscard]] const std::vector<google::protobuf::Message*>& DatabaseCatalogue();

}  // namespace corvo::telemetry::contracts
