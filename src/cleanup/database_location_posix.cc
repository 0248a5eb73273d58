#include "cleanup/database_location.h"

namespace corvo::telemetry::cleanup {

bool EntryExists(const std::filesystem::path& path) {
  std::error_code failure;
  const bool exists = std::filesystem::exists(path, failure);
  if (failure) {
    // Thrown here, because standard libraries differ in the operation that they name.
    throw std::filesystem::filesystem_error("exists", path, failure);
  }
  return exists;
}

}  // namespace corvo::telemetry::cleanup
