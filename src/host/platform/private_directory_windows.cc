// The first is needed by the second.
// clang-format off
#include <windows.h>
#include <sddl.h>
// clang-format on

#include <fmt/core.h>

#include <random>
#include <system_error>

#include "common/text.h"
#include "host/platform/private_directory.h"

namespace corvo::telemetry::host {
namespace {

/// Full access for the owner, the system and administrators, inherited by what is made inside; nothing from above.
class OwnersOnly {
 public:
  OwnersOnly() {
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;OICI;FA;;;OW)(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)",
                                                             SDDL_REVISION_1, &descriptor_, nullptr) == 0) {
      throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "cannot make access rights");
    }
  }
  OwnersOnly(const OwnersOnly&) = delete;
  OwnersOnly& operator=(const OwnersOnly&) = delete;
  ~OwnersOnly() { LocalFree(descriptor_); }

  [[nodiscard]] SECURITY_ATTRIBUTES Attributes() const { return {sizeof(SECURITY_ATTRIBUTES), descriptor_, FALSE}; }

 private:
  PSECURITY_DESCRIPTOR descriptor_ = nullptr;
};

}  // namespace

PrivateDirectory::PrivateDirectory(const std::filesystem::path& place) {
  std::random_device random;
  const std::filesystem::path path =
      std::filesystem::absolute(place / fmt::format("{}{:08x}{:08x}", kPrefix, random(), random()));
  const OwnersOnly rights;
  SECURITY_ATTRIBUTES attributes = rights.Attributes();
  if (CreateDirectoryW(path.c_str(), &attributes) == 0) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            "cannot make a directory in " + common::Utf8(place));
  }
  path_ = path;
}

}  // namespace corvo::telemetry::host
