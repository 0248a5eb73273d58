#include "storage/connection/database_path.h"

#include <google/protobuf/message.h>

#include <filesystem>
#include <system_error>

#include "corvo/telemetry/contract/storage/persistance.pb.h"
#include "storage/connection/failure.h"
#include "storage/database_name.h"
#include "storage/storage_options.h"

namespace corvo::shared {
namespace {

namespace contract_storage = telemetry::contract::storage;

DatabasePath Unresolved(const std::string& reason) { return {"", "", Failure(ResultCode::kCannotOpen, reason)}; }

}  // namespace

DatabasePath ResolveDatabase(const char* name) {
  if (name == nullptr || *name == '\0') {
    return Unresolved("no database name");
  }
  const std::filesystem::path given(name);
  if (!given.has_parent_path()) {
    return {given.string(), GetDataDirectory() + given.string(), {}};
  }
  std::error_code failure;
  const std::filesystem::path path = std::filesystem::absolute(given, failure);
  return failure ? Unresolved(failure.message()) : DatabasePath{given.filename().string(), path.string(), {}};
}

DatabasePath ResolveDatabase(const google::protobuf::Message* contract) {
  if (contract == nullptr) {
    return Unresolved("no contract");
  }
  const google::protobuf::Descriptor* type = contract->GetDescriptor();
  // As a C string: a file name ends at its first zero.
  const std::string database = type->options().GetExtension(contract_storage::persistance).database().c_str();
  if (database.empty()) {
    return Unresolved(type->full_name() + " names no database");
  }
  const std::string name = AddDatabaseExtension(database);
  if (std::filesystem::path(name).has_parent_path()) {
    return Unresolved(type->full_name() + " names a database outside the data directory: " + database);
  }
  return ResolveDatabase(name.c_str());
}

}  // namespace corvo::shared
