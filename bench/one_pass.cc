// Loads the module, runs one pass over a directory and prints the seconds that it took, loading left out. Records the
// statements of the pass on request, for programs that run the same ones in another way.

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "host/pass/loaded_module.h"
#include "storage/statement_observer.h"
#include "storage/storage_options.h"

namespace {

using corvo::shared::plugin::IDynamicPluginModule;
using std::chrono::steady_clock;

struct Options {
  std::string data_dir;
  std::string record_file;
  bool no_check = false;
};

/// Writes "file name, tab, SQL" for each statement.
class Recorder : public corvo::shared::StatementObserver {
 public:
  explicit Recorder(const std::string& file) : file_(file) {}

  void OnEnd(const corvo::shared::StatementRecord& statement) noexcept override {
    try {
      file_ << std::filesystem::path(statement.database_path).filename().string() << '\t' << statement.sql << '\n';
    } catch (...) {
      file_.setstate(std::ios::badbit);
    }
  }

  [[nodiscard]] bool Finish() {
    file_.close();
    return !file_.fail();
  }

 private:
  std::ofstream file_;
};

/// Keeps the result of one pass.
class Output : public corvo::shared::plugin::PluginBufferAllocator {
 public:
  [[nodiscard]] char* Allocate(std::size_t size) const override {
    memory_ = std::make_unique<char[]>(size);
    return memory_.get();
  }

 private:
  mutable std::unique_ptr<char[]> memory_;
};

/// @return the seconds of the pass.
double RunPass(IDynamicPluginModule& module) {
  const Output output;
  char* result = nullptr;
  const auto start = steady_clock::now();
  module.Execute("", result, output);
  const std::chrono::duration<double> seconds = steady_clock::now() - start;
  const std::string text = result == nullptr ? "no result" : result;
  if (text.find("EC_NoError") == std::string::npos) {
    throw std::runtime_error("the pass failed: " + text);
  }
  return seconds.count();
}

double RunRecorded(IDynamicPluginModule& module, const std::string& file) {
  const auto recorder = std::make_shared<Recorder>(file);
  double seconds = 0;
  {
    const corvo::shared::StatementObserverScope scope(recorder);
    seconds = RunPass(module);
  }
  if (!recorder->Finish()) {
    throw std::runtime_error("cannot write " + file);
  }
  return seconds;
}

double Run(const Options& options) {
  corvo::shared::StorageOptions storage;
  storage.data_directory = options.data_dir;
  storage.check_soundness = !options.no_check;
  corvo::shared::SetStorageOptions(storage);
  corvo::telemetry::host::LoadedModule loaded(corvo::telemetry::host::DefaultModulePath());
  return options.record_file.empty() ? RunPass(loaded.Module()) : RunRecorded(loaded.Module(), options.record_file);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Run one pass over a directory and print its seconds", "one_pass");
  Options options;
  app.add_option("--data-dir", options.data_dir, "Directory that holds the databases")->required();
  app.add_option("--record", options.record_file, "File to write the statements of the pass to");
  app.add_flag("--no-check", options.no_check, "Leave out the look through each file before it is written");
  CLI11_PARSE(app, argc, argv);
  try {
    fmt::print("{:.6f}\n", Run(options));
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "one_pass: {}\n", error.what());
    return EXIT_FAILURE;
  }
}
