#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <cstdlib>

#include "host/platform/platform.h"

namespace corvo::telemetry::host {
namespace {

constexpr int kUsualWidth = 80;

std::atomic<bool> colour_is_off = false;

HANDLE HandleOf(std::FILE* stream) { return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))); }

}  // namespace

std::filesystem::path ProgramDirectory() {
  std::array<wchar_t, 32768> path{};
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return std::filesystem::path(path.data(), path.data() + length).parent_path();
}

std::filesystem::path SqliteTemporaryDirectory() {
  std::array<wchar_t, MAX_PATH + 2> path{};
  const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  const std::filesystem::path directory(path.data(), path.data() + (length < path.size() ? length : 0));
  std::error_code ignored;
  return std::filesystem::is_directory(directory, ignored) ? directory : std::filesystem::path();
}

// A stream without a handle needs nothing: the runtime library keeps its number and refuses writes to it, and databases
// have handles, not numbers.
void PrepareProcess() {
  for (std::FILE* stream : {stdout, stderr}) {
    _setmode(_fileno(stream), _O_BINARY);
  }
  SetConsoleOutputCP(CP_UTF8);
}

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

// What is no ordinary file has been refused by its name: nobody can put a pipe or a device in a folder.
std::FILE* OpenToAppend(const std::filesystem::path& file) { return _wfopen(file.c_str(), L"aN"); }

// Devices have names of their own in every folder, NUL and CON, which no path of a file leads to.
bool IsTerminalOrNull(const std::filesystem::path& /*device*/) { return false; }

int TerminalWidth(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO console{};
  return GetConsoleScreenBufferInfo(HandleOf(stream), &console) != 0
             ? console.srWindow.Right - console.srWindow.Left + 1
             : kUsualWidth;
}

bool UsesColour(std::FILE* stream) {
  const char* no_colour = std::getenv("NO_COLOR");
  DWORD mode = 0;
  const HANDLE console = HandleOf(stream);
  return !colour_is_off && (no_colour == nullptr || *no_colour == '\0') && GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void NeverUseColour() noexcept { colour_is_off = true; }

// Output is UTF-8, and the fonts of the console have them.
bool ShowsBlocks(std::FILE* /*stream*/) { return true; }

// Timestamps do without named locales here.
std::string MissingLocaleHint() { return {}; }

}  // namespace corvo::telemetry::host
