#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "system/process_control.h"

namespace corvo::test {

using shared::plugin::IDynamicPluginModule;

std::unique_ptr<IDynamicPluginModule> LoadForGood(const std::string& module_file) {
  const HMODULE library = LoadLibraryExW(std::filesystem::absolute(module_file).make_preferred().c_str(), nullptr,
                                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (library == nullptr) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), module_file);
  }
  const auto load_plugin =
      reinterpret_cast<IDynamicPluginModule* (*)()>(reinterpret_cast<void*>(GetProcAddress(library, "LoadPlugin")));
  return std::unique_ptr<IDynamicPluginModule>(load_plugin());
}

void KillThisProcess() {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(-1));
  std::abort();
}

bool InputIsReady() {
  Sleep(1);
  DWORD available = 0;
  // Fails when the other end of the pipe is closed.
  return PeekNamedPipe(GetStdHandle(STD_INPUT_HANDLE), nullptr, 0, nullptr, &available, nullptr) == 0 || available > 0;
}

std::shared_ptr<void> Restrict(const Restrictions& restrictions) {
  if (restrictions.file_size || restrictions.without_privileges) {
    throw std::runtime_error("Windows restricts neither the size of files nor the rights of one process");
  }
  return nullptr;
}

}  // namespace corvo::test
