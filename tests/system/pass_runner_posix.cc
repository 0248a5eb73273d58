// A host for tests: runs one pass for every line it reads. Says "started" before a pass and hands out the module's
// output after it, a line each; at the end of its input it says how often its fault has fired.

#include <dlfcn.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "framework/plugin_module.h"
#include "storage/storage_settings.h"
#include "system/faulty_vfs.h"

namespace corvo::test {
namespace {

using shared::plugin::IDynamicPluginModule;

class OutputBuffer : public shared::plugin::PluginBufferAllocator {
 public:
  char* Allocate(std::size_t size) const override {
    text_.resize(size);
    return text_.data();
  }

 private:
  mutable std::string text_;
};

struct Options {
  std::string module;
  int busy_timeout_ms = 5000;
  rlim_t file_size_limit = RLIM_INFINITY;
  bool without_privileges = false;
  std::string fault;
};

Options ParseOptions(int argc, char** argv) {
  Options options;
  CLI::App app("Runs cleanup passes for tests");
  app.add_option("module", options.module)->required();
  app.add_option("--busy-timeout", options.busy_timeout_ms);
  app.add_option("--file-size-limit", options.file_size_limit);
  app.add_flag("--without-privileges", options.without_privileges);
  app.add_option("--fault", options.fault);
  app.parse(argc, argv);
  return options;
}

std::unique_ptr<IDynamicPluginModule> Load(const std::string& file) {
  // Never unloaded: tools that look at memory at the end still find its symbols.
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  const auto load_plugin = reinterpret_cast<IDynamicPluginModule* (*)()>(dlsym(library, "LoadPlugin"));
  return std::unique_ptr<IDynamicPluginModule>(load_plugin());
}

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

/// Takes the superuser's right to write everything away, while the object lives.
class Unprivileged {
 public:
  explicit Unprivileged(bool wanted) : dropped_(wanted && geteuid() == 0) {
    constexpr uid_t kNobody = 65'534;
    if (dropped_ && seteuid(kNobody) != 0) {
      throw std::runtime_error("seteuid");
    }
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
  ~Unprivileged() {
    if (dropped_ && seteuid(0) != 0) {
      _exit(EXIT_FAILURE);
    }
  }

 private:
  bool dropped_;
};

std::string RunPass(IDynamicPluginModule& module, const Options& options) {
  const FileSizeLimit file_size_limit(options.file_size_limit);
  const Unprivileged unprivileged(options.without_privileges);
  const OutputBuffer buffer;
  char* output = nullptr;
  module.Execute("", output, buffer);
  return output != nullptr ? output : "no output";
}

void Run(const Options& options) {
  shared::SetBusyTimeout(std::chrono::milliseconds(options.busy_timeout_ms));
  if (!options.fault.empty()) {
    InstallFault(ParseFault(options.fault));
  }
  const auto module = Load(options.module);
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << "started" << std::endl;
    const std::string output = RunPass(*module, options);
    std::cout << output << std::endl;
  }
  std::cout << FaultsFired() << std::endl;
}

}  // namespace
}  // namespace corvo::test

int main(int argc, char** argv) {
  try {
    corvo::test::Run(corvo::test::ParseOptions(argc, argv));
    return EXIT_SUCCESS;
  } catch (const std::exception& e) {
    std::cerr << e.what() << std::endl;
    return EXIT_FAILURE;
  }
}
