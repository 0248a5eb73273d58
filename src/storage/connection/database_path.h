#pragma once

#include <string>

#include "common/error.h"

namespace google::protobuf {
class Message;
}

namespace corvo::shared {

/// Where a database is, or why that cannot be said. Texts in the platform's narrow encoding.
struct DatabasePath {
  std::string name;  ///< file name; empty when it could not be resolved
  std::string path;  ///< absolute; empty when it could not be resolved
  telemetry::common::Error error;
};

/// A bare file name lies in the data directory, a name with a directory part is used as it stands. Null or empty cannot
/// be resolved.
[[nodiscard]] DatabasePath ResolveDatabase(const char* name);

/// The database that the contract's `persistance` option names, in the data directory.
[[nodiscard]] DatabasePath ResolveDatabase(const google::protobuf::Message* contract);

}  // namespace corvo::shared
