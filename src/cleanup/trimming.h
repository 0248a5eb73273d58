#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

namespace corvo::telemetry::cleanup {

/// Copies the `persistance` options of the contract's type over those of the first contract's type, for the whole
/// process and for good, and reads the size limit in megabytes from there: the contract's own.
///
/// The lasting effect is kept as it is, on purpose: from then on the first contract of a database carries the options
/// of its last one. 0, which means no limit, when either is null. Not thread-safe.
[[nodiscard]] std::uint32_t ReadLimitThroughFirst(const google::protobuf::Message* contract,
                                                  const google::protobuf::Message* first);

}  // namespace corvo::telemetry::cleanup
