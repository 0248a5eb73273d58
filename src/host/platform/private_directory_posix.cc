#include <stdlib.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "host/platform/private_directory.h"

namespace corvo::telemetry::host {

// By a call of POSIX: it makes a directory of a random name with rights for its owner alone.
PrivateDirectory::PrivateDirectory(const std::filesystem::path& place) {
  std::string name = std::filesystem::absolute(place / (std::string(kPrefix) + "XXXXXX")).string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "cannot make a directory in " + place.string());
  }
  path_ = name;
}

}  // namespace corvo::telemetry::host
