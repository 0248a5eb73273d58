#include <unistd.h>

#include <cstdlib>
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

}  // namespace corvo::telemetry::host
