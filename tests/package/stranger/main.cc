#include <corvo-telemetry/common/error.h>
#include <corvo-telemetry/common/logger.h>
#include <corvo-telemetry/plugin/load_plugin.h>
#include <corvo-telemetry/storage/sql_command.h>
#include <corvo-telemetry/storage/storage_options.h>
#include <corvo-telemetry/storage/telemetry_storage.h>
#include <corvo/telemetry/contract/storage/device_usage.pb.h>
#include <dlfcn.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace common = corvo::telemetry::common;
namespace datacleanup = corvo::telemetry::plugin::datacleanupplugin;
namespace shared = corvo::shared;
using corvo::telemetry::contract::storage::device_usage::PowerEvents;

class StandardErrorLog : public common::LogSink {
 public:
  void Write(const common::LogRecord& record) noexcept override {
    std::cerr << record.tag << ": " << record.text << '\n';
  }
};

void StartLog() {
  static StandardErrorLog log;
  common::InitDefaultLogger(common::LogSeverity::kError, &log);
}

shared::Rows Run(const char* sql) {
  const PowerEvents contract;
  shared::TelemetryStorage storage(&contract, "");
  auto* const command = new shared::SqlCommand(sql);
  const common::Error error = storage.Execute(command, false);
  if (error.Failed()) {
    throw std::runtime_error(std::string(sql) + ": " + error.what);
  }
  return command->GetResults();
}

void MakeDatabase(const std::filesystem::path& directory) {
  shared::SetDataDirectory(directory.string());
  std::filesystem::create_directories(directory);
  if (std::filesystem::exists(directory / "DeviceUsage.db")) {
    throw std::runtime_error("there is a database already; name an empty folder");
  }
  std::ofstream(directory / "DeviceUsage.db");
  Run("CREATE TABLE PowerEvents (time TEXT, event_kind TEXT)");
  Run("INSERT INTO PowerEvents VALUES ('2001-01-01T00:00:00+00:00', 'old'), (datetime('now'), 'new')");
}

struct Unload {
  void operator()(void* library) const { dlclose(library); }
};

class Module {
 public:
  explicit Module(const char* file) : library_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
    void* const symbol = library_ != nullptr ? dlsym(library_.get(), datacleanup::kLoadPluginName) : nullptr;
    if (symbol == nullptr) {
      throw std::runtime_error(dlerror());
    }
    object_.reset(reinterpret_cast<datacleanup::LoadPluginFunction>(symbol)());
  }

  shared::plugin::IDynamicPluginModule* operator->() const { return object_.get(); }

 private:
  std::unique_ptr<void, Unload> library_;
  std::unique_ptr<shared::plugin::IDynamicPluginModule> object_;
};

class Buffers : public shared::plugin::PluginBufferAllocator {
 public:
  char* Allocate(std::size_t size) const override { return kept_.emplace_back(std::make_unique<char[]>(size)).get(); }

 private:
  mutable std::vector<std::unique_ptr<char[]>> kept_;
};

std::string RunPass(const Module& module) {
  const Buffers buffers;
  char* output = nullptr;
  module->Execute("", output, buffers);
  return output != nullptr ? output : "no result";
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: my-host <data directory>\n";
    return 2;
  }
  try {
    StartLog();
    MakeDatabase(argv[1]);
    const std::string result = RunPass(Module(CORVO_MODULE));
    std::cout << "result: " << result << '\n';
    for (const auto& row : Run("SELECT event_kind FROM PowerEvents")) {
      std::cout << "kept: " << row[0].GetColumnValue() << '\n';
    }
    return result == common::ErrorText(common::Error()) ? 0 : 1;
  } catch (const std::exception& e) {
    std::cerr << "my-host: " << e.what() << '\n';
    return 1;
  }
}
