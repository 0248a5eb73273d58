// A host of another project: makes a database, loads the module, runs one pass and looks at what is left.
#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "corvo/telemetry/contract/storage/device_usage.pb.h"
#include "framework/plugin_module.h"
#include "storage/sql_command.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace {

using corvo::shared::plugin::IDynamicPluginModule;
using corvo::telemetry::contract::storage::device_usage::PowerEvents;

// Keeps what the module wrote for as long as the program needs it.
class KeepingAllocator : public corvo::shared::plugin::PluginBufferAllocator {
 public:
  char* Allocate(std::size_t size) const override {
    return buffers_.emplace_back(std::make_unique<char[]>(size)).get();
  }

 private:
  mutable std::vector<std::unique_ptr<char[]>> buffers_;
};

void Require(bool condition, const std::string& message) {
  if (!condition) {
    throw std::runtime_error(message);
  }
}

// Runs one statement on the database of the contract; the first value of its first row, or the empty text.
std::string Run(const char* sql) {
  const PowerEvents contract;
  corvo::shared::TelemetryStorage storage(&contract, "");
  auto* const command = new corvo::shared::SqlCommand(sql);
  const corvo::telemetry::common::Error error = storage.Execute(command, false);
  Require(!error.Failed(), std::string(sql) + ": " + error.what);
  const auto rows = command->GetResults();
  return rows.count == 0 ? "" : rows[0][0].GetColumnValue();
}

void MakeDatabase(const std::filesystem::path& folder) {
  corvo::shared::SetDataDirectory(folder.string());
  std::ofstream(folder / "DeviceUsage.db", std::ios::trunc);  // an empty file is an empty database
  Run("CREATE TABLE PowerEvents (time TEXT, event_kind TEXT)");
  Run("INSERT INTO PowerEvents VALUES ('2001-01-01T00:00:00+00:00', 'old'), (datetime('now'), 'new')");
}

std::unique_ptr<IDynamicPluginModule> LoadModule() {
  void* const library = dlopen(PLUGIN_DIR "/corvo-telemetry-data-cleanup.so", RTLD_NOW | RTLD_LOCAL);
  Require(library != nullptr, library == nullptr ? dlerror() : "");
  auto* const load = reinterpret_cast<IDynamicPluginModule* (*)()>(dlsym(library, "LoadPlugin"));
  Require(load != nullptr, "LoadPlugin is not exported");
  return std::unique_ptr<IDynamicPluginModule>(load());
}

void RunPass() {
  const KeepingAllocator allocator;
  char* output = nullptr;
  LoadModule()->Execute("", output, allocator);
  Require(output != nullptr, "the module wrote no output");
  Require(std::string(output) == R"({"category":"EC_NoError","code":0,"version":3})", output);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Require(argc == 2, "usage: stranger <data folder>");
    MakeDatabase(argv[1]);
    RunPass();
    Require(Run("SELECT group_concat(event_kind) FROM PowerEvents") == "new", "the wrong rows were deleted");
  } catch (const std::exception& e) {
    std::cerr << "stranger: " << e.what() << '\n';
    return 1;
  }
  return 0;
}
