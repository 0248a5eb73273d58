#include "host/platform/private_directory.h"

#include <system_error>

namespace corvo::telemetry::host {

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace corvo::telemetry::host
