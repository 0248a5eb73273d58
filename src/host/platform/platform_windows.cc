#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <cstdlib>

#include "host/platform/platform.h"

namespace corvo::telemetry::host {

std::filesystem::path ProgramDirectory() {
  std::array<wchar_t, 32768> path{};
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return std::filesystem::path(path.data(), path.data() + length).parent_path();
}

void PrepareStandardStreams() {
  for (std::FILE* stream : {stdout, stderr}) {
    _setmode(_fileno(stream), _O_BINARY);
  }
  SetConsoleOutputCP(CP_UTF8);
}

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

bool UsesColour(std::FILE* stream) {
  const char* no_colour = std::getenv("NO_COLOR");
  DWORD mode = 0;
  const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
  return (no_colour == nullptr || *no_colour == '\0') && GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

// Timestamps do without named locales here.
std::string MissingLocaleHint() { return {}; }

}  // namespace corvo::telemetry::host
