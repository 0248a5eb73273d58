#pragma once

#include <gtest/gtest.h>

#include <string>

#include "plugin/loaded_module.h"
#include "support/buffer_allocator.h"
#include "support/database.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace corvo::test {

/// Passes of the real module over a data directory of the test's own. The program knows the module's interface alone.
class ModulePass : public testing::Test {
 public:
  ModulePass() { SetHasData(true); }
  ~ModulePass() override { SetEnvironment("CORVO_TELEMETRY_DATA_DIR", nullptr); }

  /// Whether passes see the databases that the test creates, or an empty directory.
  void SetHasData(bool has_data) const {
    SetEnvironment("CORVO_TELEMETRY_DATA_DIR", (has_data ? directory : empty_directory).Path().string().c_str());
  }

  void CreateUsage() const { Usage().Run("CREATE TABLE PowerEvents (time TEXT)"); }
  void AddExpiredRow() const { Usage().Run("INSERT INTO PowerEvents VALUES ('2000-01-01T00:00:00+00:00')"); }
  [[nodiscard]] std::int64_t CountRows() const { return Usage().Count("PowerEvents"); }

  /// Runs a pass and returns what it handed out.
  static std::string Run(shared::plugin::IDynamicPluginModule& module) {
    const BufferAllocator allocator;
    char* output = nullptr;
    module.Execute(nullptr, output, allocator);
    return output != nullptr ? output : "";
  }

  static constexpr const char* kSuccessJson = R"({"category":"EC_NoError","code":0,"version":3})";

 private:
  [[nodiscard]] Database Usage() const { return Database(directory / "DeviceUsage.db"); }

  TempDir directory;
  TempDir empty_directory;
};

}  // namespace corvo::test
