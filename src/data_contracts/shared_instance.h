#pragma once

#include <google/protobuf/message.h>

#include "data_contracts/data_contracts_export.h"

namespace corvo::telemetry::contract::storage {

/// The process's one heap instance of the prototype's type, made with the type's default constructor when it is first
/// asked for and deliberately never deleted. A module that is loaded and unloaded many times so adds nothing.
///
/// Thread-safe. The instance belongs to the process and must not be changed.
[[nodiscard]] CORVO_DATA_CONTRACTS_API google::protobuf::Message* SharedInstance(
    const google::protobuf::Message& prototype);

}  // namespace corvo::telemetry::contract::storage
