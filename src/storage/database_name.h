#pragma once

#include <string>
#include <string_view>

namespace corvo::shared {

// The one home of the rule that leads from the name of a database to the name of its file and back.

inline constexpr std::string_view kDatabaseExtension = ".db";

/// The file name of a database: HealthLog gives HealthLog.db.
[[nodiscard]] inline std::string AddDatabaseExtension(std::string name) { return name.append(kDatabaseExtension); }

/// The name without one ".db" at its end, in exactly these letters; a name that is nothing but ".db" stays as it is.
[[nodiscard]] inline std::string RemoveDatabaseExtension(std::string name) {
  if (name.size() > kDatabaseExtension.size() && name.ends_with(kDatabaseExtension)) {
    name.resize(name.size() - kDatabaseExtension.size());
  }
  return name;
}

}  // namespace corvo::shared
