#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "contracts/collection.h"

namespace corvo::telemetry::cleanup {

/// What is to be cleaned in one database.
struct DatabaseEntry {
  std::uint32_t max_size_mb = 0;                            ///< size limit in decimal megabytes; 0 means none
  std::vector<const google::protobuf::Message*> contracts;  ///< one a table, in the order in which they were added
};

/// Lower-cased database name to its entry, in ascending byte order.
using DatabaseMap = std::map<std::string, DatabaseEntry>;

/// Groups the contracts by database, leaving out the databases that are never cleaned, and attaches each database's
/// size limit. Consumes the cursor of `contracts`.
void GroupTablesByDatabase(common::collection::ContractsCollection& contracts, DatabaseMap& map);

}  // namespace corvo::telemetry::cleanup
