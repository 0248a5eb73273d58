#include <unistd.h>

#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string_view>

#include "host/platform/platform.h"

namespace corvo::telemetry::host {

std::filesystem::path ProgramDirectory() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

void PrepareStandardStreams() {}

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

bool UsesColour(std::FILE* stream) {
  const char* no_colour = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return IsTerminal(stream) && (no_colour == nullptr || *no_colour == '\0') &&
         (terminal == nullptr || std::string_view(terminal) != "dumb");
}

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
