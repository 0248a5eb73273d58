#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "framework/plugin_module.h"

namespace corvo::test {

/// Loads the module, never to be unloaded: tools that look at memory at the end still find its symbols. An object of
/// it.
[[nodiscard]] std::unique_ptr<shared::plugin::IDynamicPluginModule> LoadForGood(const std::string& module_file);

/// Ends this process at once, as if from outside.
[[noreturn]] void KillThisProcess();

/// Whether standard input has come to its end or holds something to read; waits a millisecond for it.
[[nodiscard]] bool InputIsReady();

/// What the system is to refuse this process.
struct Restrictions {
  std::optional<std::uint64_t> file_size;  ///< writing beyond this size, in bytes
  bool without_privileges = false;         ///< the superuser's right to write everything
};

/// Puts the restrictions into effect for as long as the result lives. Throws where the platform has no such thing.
[[nodiscard]] std::shared_ptr<void> Restrict(const Restrictions& restrictions);

}  // namespace corvo::test
