#pragma once

#include <google/protobuf/message.h>

#include <string>

#include "corvo/telemetry/contract/storage/persistance.pb.h"

namespace corvo::telemetry::contracts {

/// The `persistance` options of the message's type: the type's own shared object, read afresh on every call, or the
/// default instance (empty texts and zeros, hence no limits) when the type sets none. `message` must not be null. The
/// spelling "persistance" is frozen.
[[nodiscard]] const contract::storage::PersistanceMessageOptions& GetPersistance(
    const google::protobuf::Message& message);

/// SQL name of the table that holds the type's rows: the option `table_name`, else the short name of the type; empty
/// for null.
[[nodiscard]] std::string GetTableName(const google::protobuf::Message* message);

/// Name, without extension, of the database that holds the type's rows, as the storage library resolves it. A type
/// whose database cannot be resolved or opened counts as living in a database named after the type. Empty for null;
/// throws nothing but std::bad_alloc.
[[nodiscard]] std::string GetDatabaseName(const google::protobuf::Message* message);

}  // namespace corvo::telemetry::contracts
