// A host for tests: runs one pass for every line it reads. Says "started" before a pass and hands out the module's
// output after it, a line each; at the end of its input it says how often its fault has fired.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "framework/plugin_module.h"
#include "support/option_scope.h"
#include "system/faulty_vfs.h"
#include "system/process_control.h"

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
  Restrictions restrictions;
  std::string fault;
};

Options ParseOptions(int argc, char** argv) {
  Options options;
  CLI::App app("Runs cleanup passes for tests");
  // On Windows, too, a path may begin with a slash.
  app.allow_windows_style_options(false);
  app.add_option("module", options.module)->required();
  app.add_option("--busy-timeout", options.busy_timeout_ms);
  app.add_option("--file-size-limit", options.restrictions.file_size);
  app.add_flag("--without-privileges", options.restrictions.without_privileges);
  app.add_option("--fault", options.fault);
  app.parse(argc, argv);
  return options;
}

std::string RunPass(IDynamicPluginModule& module, const Options& options) {
  const auto restricted = Restrict(options.restrictions);
  const OutputBuffer buffer;
  char* output = nullptr;
  module.Execute("", output, buffer);
  return output != nullptr ? output : "no output";
}

void Run(const Options& options) {
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(options.busy_timeout_ms));
  if (!options.fault.empty()) {
    InstallFault(ParseFault(options.fault));
  }
  const auto module = LoadForGood(options.module);
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
