#include "contracts/lookups.h"

#include <google/protobuf/descriptor.pb.h>

#include "common/error.h"
#include "storage/database_name.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::contracts {

using google::protobuf::Message;

const contract::storage::PersistanceMessageOptions& GetPersistance(const Message& message) {
  return message.GetDescriptor()->options().GetExtension(contract::storage::persistance);
}

std::string GetTableName(const Message* message) {
  if (message == nullptr) {
    return {};
  }
  std::string name = GetPersistance(*message).table_options().table_name();
  return name.empty() ? message->GetDescriptor()->name() : name;
}

std::string GetDatabaseName(const Message* message) {
  if (message == nullptr) {
    return {};
  }
  try {
    shared::TelemetryStorage storage(message, "");
    const common::Error error = storage.GetLastError();
    if (error.Failed()) {
      throw common::Error(error);
    }
    return shared::RemoveDatabaseExtension(storage.GetDataBaseName());
  } catch (...) {
    return message->GetDescriptor()->name();
  }
}

}  // namespace corvo::telemetry::contracts
