#include <locale>
#include <stdexcept>

#include "host/platform/locale_check.h"

namespace corvo::telemetry::host {

std::string MissingLocaleHint() {
  try {
    static_cast<void>(std::locale("en_US"));
    return {};
  } catch (const std::runtime_error&) {
    return "the locale en_US is missing and a pass needs it; as root: localedef -i en_US -f ISO-8859-1 en_US "
           "(package locales)";
  }
}

}  // namespace corvo::telemetry::host
