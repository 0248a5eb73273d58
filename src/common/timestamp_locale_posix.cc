#include <locale.h>

#include "common/timestamp_locale.h"

namespace corvo::telemetry::common {
namespace {

constexpr const char* kName = "en_US";

bool Exists() {
  const locale_t locale = newlocale(LC_ALL_MASK, kName, nullptr);
  if (locale != nullptr) {
    freelocale(locale);
  }
  return locale != nullptr;
}

}  // namespace

// The named locale must exist, but is not built: GNU's standard library crashes when memory runs out while it builds
// one. The classic locale formats timestamps alike. A missing one is built all the same, for the library's own error.
std::locale TimestampLocale() { return Exists() ? std::locale::classic() : std::locale(kName); }

bool CanFormat(const std::tm& /*time*/) { return true; }

}  // namespace corvo::telemetry::common
