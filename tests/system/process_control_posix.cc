#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <stdexcept>

#include "support/unprivileged_posix.h"
#include "system/process_control.h"

namespace corvo::test {
namespace {

using shared::plugin::IDynamicPluginModule;

/// The largest file that this process may write, while the object lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    // The limit is to be an error of the write, not a signal.
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};

struct Both {
  explicit Both(const Restrictions& restrictions)
      : file_size(restrictions.file_size.value_or(RLIM_INFINITY)), unprivileged(restrictions.without_privileges) {}

  FileSizeLimit file_size;
  Unprivileged unprivileged;
};

}  // namespace

std::unique_ptr<IDynamicPluginModule> LoadForGood(const std::string& module_file) {
  void* const library = dlopen(module_file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  const auto load_plugin = reinterpret_cast<IDynamicPluginModule* (*)()>(dlsym(library, "LoadPlugin"));
  return std::unique_ptr<IDynamicPluginModule>(load_plugin());
}

void KillThisProcess() {
  raise(SIGKILL);
  std::abort();
}

bool InputIsReady() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, 1) > 0;
}

std::shared_ptr<void> Restrict(const Restrictions& restrictions) { return std::make_shared<Both>(restrictions); }

}  // namespace corvo::test
