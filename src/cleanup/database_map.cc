#include "cleanup/database_map.h"

#include <algorithm>
#include <cctype>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"

namespace corvo::telemetry::cleanup {
namespace {

using common::collection::ContractsCollection;
using common::collection::DatabasesCollection;
using google::protobuf::Message;

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
  return text;
}

/// Databases that are never cleaned, in lower case. The name of the list is frozen.
const std::vector<std::string> ExcludedNames = {LowerCase("State")};

bool IsExcluded(const std::string& key) {
  return std::find(ExcludedNames.begin(), ExcludedNames.end(), key) != ExcludedNames.end();
}

/// The contract's own `database` option up to its first zero byte, in lower case.
std::string DatabaseKey(const Message& contract) {
  return LowerCase(contracts::GetPersistance(contract).database().c_str());
}

/// The size limit of the first database message that the storage library resolves to the same name.
std::uint32_t FindSizeLimit(const std::string& database, DatabasesCollection& databases) {
  databases.Rewind();
  while (const Message* message = databases.Next()) {
    if (contracts::GetDatabaseName(message) == database) {
      return contracts::GetPersistance(*message).database_options().max_size_mb();
    }
  }
  return 0;
}

}  // namespace

void GroupTablesByDatabase(ContractsCollection& contracts, DatabaseMap& map) {
  DatabasesCollection databases;
  for (Message* message : contracts::DatabaseCatalogue()) {
    databases.Add(message);
  }
  while (contracts.HasMore()) {
    const Message* contract = contracts.Next();
    const std::string key = DatabaseKey(*contract);
    if (IsExcluded(key)) {
      continue;
    }
    DatabaseEntry& entry = map[key];
    // The last contract of a database decides its limit.
    entry.max_size_mb = FindSizeLimit(contracts::GetDatabaseName(contract), databases);
    entry.contracts.push_back(contract);
  }
}

}  // namespace corvo::telemetry::cleanup
