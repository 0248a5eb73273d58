#include <windows.h>

#include <stdexcept>

namespace {

// Protobuf cannot register the same descriptors twice: the library stays in the process when the module is unloaded.
bool KeepLoaded() {
  HMODULE library = nullptr;
  if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&KeepLoaded), &library) == 0) {
    throw std::runtime_error("the data contracts cannot be kept loaded");
  }
  return true;
}

[[maybe_unused]] const bool kKeptLoaded = KeepLoaded();

}  // namespace
