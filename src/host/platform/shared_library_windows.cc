#include <windows.h>

#include <stdexcept>
#include <system_error>

#include "host/platform/shared_library.h"

namespace corvo::telemetry::host {
namespace {

// Beside the library and in the system's own directory only.
constexpr DWORD kWhereItsLibrariesAre = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;

}  // namespace

SharedLibrary::SharedLibrary(const std::filesystem::path& file)
    : handle_(LoadLibraryExW(std::filesystem::absolute(file).c_str(), nullptr, kWhereItsLibrariesAre)) {
  if (handle_ == nullptr) {
    const std::string reason = std::system_category().message(static_cast<int>(GetLastError()));
    throw std::runtime_error(file.string() + ": " + reason);
  }
}

SharedLibrary::~SharedLibrary() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* SharedLibrary::Find(const char* function) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), function));
}

}  // namespace corvo::telemetry::host
